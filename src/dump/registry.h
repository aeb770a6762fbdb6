// SPDX-License-Identifier: Apache-2.0
// The registry of printers: the printer for each key.
#pragma once

#include <cstdint>
#include <string_view>

#include "dump/context.h"
#include "dump/record.h"

namespace qvs {

// A property to print.
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

    // Prints the line that ends the output of nearly every printer.
    void classLine() const { print<"\t\t\tpropType = %s\n">(NetDVSPropTypeStr(propType)); }
};

using NetDVSPrinter = void (*)(const PrintJob &job);

// Returns the printer of a key; for most keys, this is the printer of generic values. Valid after
// SharedObjectInit has run.
NetDVSPrinter findPrinter(const char *key);

// A cache of the printers of recent keys. The ports of a switch have the same few keys, and comparing a key
// is faster than searching the registry.
class PrinterCache {
  public:
    // `key` must end with a NUL, as for findPrinter.
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
