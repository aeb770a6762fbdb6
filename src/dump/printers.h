// The printers of the registry. Each is a NetDVSPrinter; their results are read by nobody.
#pragma once

#include "dump/context.h"

namespace qvs {

// One 32-bit number, shown as signed: connection ids and MTUs.
int printNumber(const char *key, const void *value, uint32_t length, uint32_t propType, NetDVSDumpCtx *ctx);

// Any value without a printer of its own: as text when it is one printable string with its NUL, else as
// bytes.
int printGeneric(const char *key, const void *value, uint32_t length, uint32_t propType, NetDVSDumpCtx *ctx);

}  // namespace qvs
