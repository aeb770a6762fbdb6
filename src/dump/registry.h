// The registry of printers: which key is printed how.
#pragma once

#include <cstdint>
#include <string_view>

#include "dump/context.h"
#include "dump/record.h"

namespace qvs {

// One property to be printed.
struct PrintJob {
    std::string_view key;
    RecordView record;
    uint32_t propType;
    NetDVSDumpCtx *ctx;

    // By value: a field of a packed record cannot be referred to.
    template <Format F, typename... Arguments>
    void print(Arguments... arguments) const {
        NetDVSDumpPrintf<F>(ctx, arguments...);
    }

    // The line that ends nearly every printer's output.
    void classLine() const { print<"\t\t\tpropType = %s\n">(NetDVSPropTypeStr(propType)); }
};

using NetDVSPrinter = void (*)(const PrintJob &job);

// The printer of a key, which is that of generic values for most. Valid once SharedObjectInit has run.
NetDVSPrinter findPrinter(const char *key);

// The printers of the keys seen last: the ports of a switch come with the same few, and comparing one key
// costs less than searching the registry.
class PrinterCache {
  public:
    // `key` ends with a NUL like those of findPrinter.
    NetDVSPrinter find(std::string_view key);

  private:
    static constexpr size_t kSlots = 128;
    static constexpr size_t kLongestKey = 79;
    struct Slot {
        char key[kLongestKey + 1];
        uint32_t length;
        NetDVSPrinter printer;
    };
    static size_t slotOf(std::string_view key);

    Slot slots_[kSlots]{};
};

}  // namespace qvs
