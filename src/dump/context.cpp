// Writing the text of the dump.
#include "dump/context.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "qvs/mesh_public.h"

namespace qvs {
namespace {

// One doubling is always enough: a piece is shorter than the smallest buffer.
bool makeRoom(NetDVSDumpCtx *ctx, int32_t length) {
    if (int64_t{ctx->length} + 1 + length <= ctx->capacity) return true;
    if (ctx->capacity > std::numeric_limits<int32_t>::max() / 2) return false;
    const int32_t capacity = ctx->capacity * 2;
    auto *text = static_cast<char *>(std::realloc(ctx->text, static_cast<size_t>(capacity)));
    if (text == nullptr) return false;
    ctx->text = text;
    ctx->capacity = capacity;
    return true;
}

}  // namespace

void NetDVSDumpPrintf(NetDVSDumpCtx *ctx, const char *format, ...) {
    char piece[kDumpPieceSize];
    va_list arguments;
    va_start(arguments, format);
    int length = vsnprintf(piece, sizeof piece, format, arguments);
    va_end(arguments);
    if (length < 0) return;
    if (static_cast<size_t>(length) >= sizeof piece) length = static_cast<int>(sizeof piece) - 1;
    if (!makeRoom(ctx, length)) return;

    std::memcpy(ctx->text + ctx->length, piece, static_cast<size_t>(length));
    ctx->length += length;
    ctx->text[ctx->length] = '\0';
}

void NetDVSPropTypeStr(uint32_t propType, char (&words)[kPropTypeSize]) {
    static_assert(sizeof "CONFIG RUNTIME VOLATILE POLICY " <= kPropTypeSize);
    struct Class {
        uint32_t bit;
        const char *word;
    };
    constexpr Class kClasses[] = {
        {DVS_PROP_CONFIG, "CONFIG "},
        {DVS_PROP_RUNTIME, "RUNTIME "},
        {DVS_PROP_VOLATILE, "VOLATILE "},
        {DVS_PROP_POLICY, "POLICY "},
    };
    char *end = words;
    *end = '\0';
    for (const Class &c : kClasses) {
        if ((propType & c.bit) != 0) end = stpcpy(end, c.word);
    }
}

}  // namespace qvs
