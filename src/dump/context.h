// SPDX-License-Identifier: Apache-2.0
// The state of a running dump: its growing text, and the function that writes to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "dump/format.h"
#include "qvs/hyp.h"

namespace qvs {

// Exists for the duration of one NetDVS_Dump. It is passed to every walk and printer.
struct NetDVSDumpCtx {
    char *text;      // owned, always NUL-terminated
    int32_t length;  // characters written, without the NUL
    int32_t capacity;
    int32_t prepared;          // the part of the capacity that may be written to
    int32_t newLayout;         // 1 while the switch being printed has a version above 99
    const char *switchFilter;  // the one identifier to print, or null
};

constexpr int32_t kDumpInitialCapacity = 4096;
constexpr size_t kDumpPieceSize = 4095;  // a longer piece is truncated

// Returns the address where a piece of at most this length may be written: the end of the text, or null if
// memory runs out and the piece is lost. The text grows at most once, by doubling up to 2^31 - 1 bytes.
char *dumpReserve(NetDVSDumpCtx *ctx, size_t length);
inline void dumpCommit(NetDVSDumpCtx *ctx, char *end) {
    ctx->length = static_cast<int32_t>(end - ctx->text);
    *end = '\0';
}

// Collects a piece that may not fit into the current text, and truncates it before it is appended.
class LongPiece {
  public:
    void append(std::string_view text);
    void flush(NetDVSDumpCtx *ctx) const;

  private:
    char text_[kDumpPieceSize];
    size_t length_ = 0;
};

// Appends a converted argument to a piece.
template <Conversion C, typename Argument>
void appendArgument(LongPiece &piece, const Argument &argument) {
    if constexpr (C == Conversion::Text) {
        piece.append(argument);
    } else {
        char digits[24];
        const char *end = writeArgument<C>(digits, argument);
        piece.append({digits, static_cast<size_t>(end - digits)});
    }
}

// Writes a piece to memory with enough room and returns its end.
template <Format F, size_t... I, typename... Arguments>
char *writePiece(char *out, std::index_sequence<I...>, const Arguments &...arguments) {
    constexpr const auto &kKinds = kParsedFormat<F>.kind;
    ((out = writeArgument<kKinds[I]>(writeText(out, literalOf<F, I>()), arguments)), ...);
    return writeText(out, literalOf<F, sizeof...(I)>());
}

template <Format F, size_t... I, typename... Arguments>
void dumpPiece(NetDVSDumpCtx *ctx, std::index_sequence<I...> indexes, const Arguments &...arguments) {
    const size_t most = sizeof F.text + (size_t{0} + ... + longest(arguments));
    if (most <= kDumpPieceSize && most < static_cast<size_t>(ctx->prepared - ctx->length)) {
        dumpCommit(ctx, writePiece<F>(ctx->text + ctx->length, indexes, arguments...));
    } else {
        constexpr const auto &kKinds = kParsedFormat<F>.kind;
        LongPiece piece;
        ((piece.append(literalOf<F, I>()), appendArgument<kKinds[I]>(piece, arguments)), ...);
        piece.append(literalOf<F, sizeof...(I)>());
        piece.flush(ctx);
    }
}

// Appends one formatted piece, truncated to 4095 characters: NetDVSDumpPrintf<"\t%s = %d\n">(ctx, name,
// number). If memory runs out, only this piece is dropped.
template <Format F, typename... Arguments>
void NetDVSDumpPrintf(NetDVSDumpCtx *ctx, const Arguments &...arguments) {
    static_assert(kParsedFormat<F>.kind.size() == sizeof...(Arguments), "one argument for each conversion");
    dumpPiece<F>(ctx, std::index_sequence_for<Arguments...>(), formatArgument(arguments)...);
}

// Appends a piece for each number, all at once if there is room. If memory runs out, each piece is kept or
// dropped separately.
template <Format... F, typename... Numbers>
requires(std::integral<Numbers> &&...) void NetDVSDumpPrintEach(NetDVSDumpCtx *ctx, Numbers... numbers) {
    const size_t most = (size_t{0} + ... + (sizeof F.text + longest(formatArgument(numbers))));
    if (most < static_cast<size_t>(ctx->prepared - ctx->length)) {
        char *out = ctx->text + ctx->length;
        ((out = writePiece<F>(out, std::index_sequence<0>(), formatArgument(numbers))), ...);
        dumpCommit(ctx, out);
    } else {
        (NetDVSDumpPrintf<F>(ctx, numbers), ...);
    }
}

// Returns the words of the class bits, each followed by a blank: "CONFIG RUNTIME VOLATILE POLICY ".
std::string_view NetDVSPropTypeStr(uint32_t propType);

}  // namespace qvs
