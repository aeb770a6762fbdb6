// The registry of printers: which key is printed how.
#pragma once

#include <cstdint>

#include "dump/context.h"

namespace qvs {

// Prints one property. The value has length bytes, and one readable byte when length is 0.
using NetDVSPrinter = int (*)(const char *key, const void *value, uint32_t length, uint32_t propType,
                              NetDVSDumpCtx *ctx);

// The printer of a key, or null for the generic form. Valid once SharedObjectInit has run.
NetDVSPrinter findPrinter(const char *key);

}  // namespace qvs
