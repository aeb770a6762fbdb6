// Writing the text of the dump.
#include "dump/context.h"

#include <cstdlib>
#include <limits>

#include "qvs/mesh_public.h"

namespace qvs {

void LongPiece::append(std::string_view text) {
    length_ += text.copy(text_ + length_, kDumpPieceSize - length_);
}

void LongPiece::flush(NetDVSDumpCtx *ctx) const {
    char *out = dumpReserve(ctx, length_);
    if (out != nullptr) dumpCommit(ctx, writeText(out, {text_, length_}));
}

// One doubling is always enough: a piece is shorter than the smallest buffer.
char *dumpReserve(NetDVSDumpCtx *ctx, size_t length) {
    if (static_cast<size_t>(ctx->length) + 1 + length > static_cast<size_t>(ctx->capacity)) {
        if (ctx->capacity > std::numeric_limits<int32_t>::max() / 2) return nullptr;
        const int32_t capacity = ctx->capacity * 2;
        auto *text = static_cast<char *>(std::realloc(ctx->text, static_cast<size_t>(capacity)));
        if (text == nullptr) return nullptr;
        ctx->text = text;
        ctx->capacity = capacity;
    }
    return ctx->text + ctx->length;
}

void dumpCommit(NetDVSDumpCtx *ctx, const char *end) {
    ctx->length = static_cast<int32_t>(end - ctx->text);
    ctx->text[ctx->length] = '\0';
}

std::string_view NetDVSPropTypeStr(uint32_t propType, char (&words)[kPropTypeSize]) {
    static_assert(sizeof "CONFIG RUNTIME VOLATILE POLICY " <= kPropTypeSize);
    struct Class {
        uint32_t bit;
        std::string_view word;
    };
    constexpr Class kClasses[] = {
        {DVS_PROP_CONFIG, "CONFIG "},
        {DVS_PROP_RUNTIME, "RUNTIME "},
        {DVS_PROP_VOLATILE, "VOLATILE "},
        {DVS_PROP_POLICY, "POLICY "},
    };
    char *end = words;
    for (const Class &c : kClasses) {
        if ((propType & c.bit) != 0) end = writeText(end, c.word);
    }
    *end = '\0';
    return {words, static_cast<size_t>(end - words)};
}

}  // namespace qvs
