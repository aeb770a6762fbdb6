// SPDX-License-Identifier: Apache-2.0
// Writes the text of the dump.
#include "dump/context.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
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

namespace {

// Page faults cost more than writing the text. A large text therefore requests huge pages, and other texts
// request several pages at a time. The kernel may refuse both requests without consequences.
constexpr int32_t kStretch = 128 << 10;
constexpr int32_t kWorthHugePages = 4 << 20;

// The range includes the complete pages at both ends. If only a part of a mapping had the advice, the kernel
// would split the mapping, and realloc could no longer grow it without a copy.
void advise(char *text, int32_t size, int advice) {
    const auto pageSize = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t offset = reinterpret_cast<uintptr_t>(text) & (pageSize - 1);
    madvise(text - offset, static_cast<size_t>(size) + offset, advice);
}

bool grow(NetDVSDumpCtx *ctx) {
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    if (ctx->capacity == kMost) return false;
    const int32_t capacity = ctx->capacity > kMost / 2 ? kMost : ctx->capacity * 2;
    auto *text = static_cast<char *>(std::realloc(ctx->text, static_cast<size_t>(capacity)));
    if (text == nullptr) return false;
    ctx->text = text;
    ctx->capacity = capacity;
    if (capacity >= kWorthHugePages) advise(text, capacity, MADV_HUGEPAGE);
    return true;
}

void prepareStretch(NetDVSDumpCtx *ctx) {
    const int32_t size = std::min(kStretch, ctx->capacity - ctx->prepared);
    if (ctx->capacity > kStretch) advise(ctx->text + ctx->prepared, size, MADV_POPULATE_WRITE);
    ctx->prepared += size;
}

}  // namespace

// One doubling is always sufficient, because a piece is shorter than the smallest buffer and shorter than the
// prepared step.
char *dumpReserve(NetDVSDumpCtx *ctx, size_t length) {
    const size_t needed = static_cast<size_t>(ctx->length) + 1 + length;
    if (needed > static_cast<size_t>(ctx->capacity) && !grow(ctx)) return nullptr;
    if (needed > static_cast<size_t>(ctx->prepared)) prepareStretch(ctx);
    return ctx->text + ctx->length;
}

namespace {

// The words for each combination of the class bits, which are bits 2 to 5.
constexpr size_t kClassBits = DVS_PROP_CONFIG | DVS_PROP_RUNTIME | DVS_PROP_VOLATILE | DVS_PROP_POLICY;
constexpr size_t kFirstClassBit = std::countr_zero(kClassBits);

struct ClassWords {
    char text[32]{};
    size_t length = 0;
};

constexpr auto kClassWords = [] {
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
    std::array<ClassWords, (kClassBits >> kFirstClassBit) + 1> rows;
    for (size_t i = 0; i < rows.size(); ++i) {
        ClassWords &row = rows[i];
        for (const Class &c : kClasses) {
            if ((i << kFirstClassBit & c.bit) == 0) continue;
            for (const char letter : c.word)
                row.text[row.length++] = letter;
        }
    }
    return rows;
}();

}  // namespace

std::string_view NetDVSPropTypeStr(uint32_t propType) {
    const ClassWords &row = kClassWords[(propType & kClassBits) >> kFirstClassBit];
    return {row.text, row.length};
}

}  // namespace qvs
