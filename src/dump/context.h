// The dump in the making: its growing text, and the one function that writes to it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qvs/hyp.h"

namespace qvs {

// Lives for one NetDVS_Dump and is handed to every walker and printer.
struct NetDVSDumpCtx {
    char *text;      // owned, always terminated
    int32_t length;  // characters written, without the NUL
    int32_t capacity;
    int32_t newLayout;         // 1 while the switch being printed has a version above 99
    const char *switchFilter;  // the one identifier to print, or null
};

constexpr int32_t kDumpInitialCapacity = 4096;
constexpr size_t kDumpPieceSize = 4096;  // a piece holds one character less

// Appends one formatted piece, cut to 4095 characters. Memory that runs out drops the piece and nothing else.
__attribute__((format(printf, 2, 3))) void NetDVSDumpPrintf(NetDVSDumpCtx *ctx, const char *format, ...);

// The words of the class bits, each with its trailing blank: "CONFIG RUNTIME VOLATILE POLICY ".
constexpr size_t kPropTypeSize = 32;
void NetDVSPropTypeStr(uint32_t propType, char (&words)[kPropTypeSize]);

}  // namespace qvs
