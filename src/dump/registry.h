// The registry of printers: which key is printed how.
#pragma once

#include <cstdint>

#include "dump/context.h"
#include "dump/record.h"

namespace qvs {

// One property to be printed.
struct PrintJob {
    const char *key;
    RecordView record;
    uint32_t propType;
    NetDVSDumpCtx *ctx;

    template <Format F, typename... Arguments>
    void print(const Arguments &...arguments) const {
        NetDVSDumpPrintf<F>(ctx, arguments...);
    }

    // The line that ends nearly every printer's output.
    void classLine() const {
        char words[kPropTypeSize];
        print<"\t\t\tpropType = %s\n">(NetDVSPropTypeStr(propType, words));
    }
};

using NetDVSPrinter = void (*)(const PrintJob &job);

// The printer of a key, or null for the generic form. Valid once SharedObjectInit has run.
NetDVSPrinter findPrinter(const char *key);

}  // namespace qvs
