// SPDX-License-Identifier: Apache-2.0
// qvs options: the switch module's options at run time.
#include <qvs/qvs.h>

#include <cstring>
#include <string>
#include <vector>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr const char *kWhat = "runtime options";
constexpr RecordKind kOptions{"runtime-options", "options", kWhat};
constexpr size_t kLengthSize = sizeof(uint32_t);

std::vector<uint16_t> identifiers(const Arguments &arguments) {
    std::vector<uint16_t> ids;
    for (const std::string &text : arguments.all("ID")) {
        ids.push_back(static_cast<uint16_t>(*parseNumber(text)));
    }
    if (ids.size() > UINT16_MAX) fail(Exit::Usage, "ID: {} of them, at most 65535 fit", ids.size());
    return ids;
}

VshypBuffer readBlock(std::vector<uint16_t> ids) {
    VshypBuffer block;
    require(fetch<VSHYP_GetRuntimeOptions>(block, ids.data(), static_cast<uint16_t>(ids.size())), kWhat);
    return block;
}

void get(const Arguments &arguments, Output &out) {
    const VshypBuffer block = readBlock(identifiers(arguments));
    printRecord(arguments, out, kOptions,
                {static_cast<const uint8_t *>(block.get()), VSHYP_RUNTIME_OPTIONS_SIZE});
}

// A block begins with its own length. A file has the size of the longest block; the bytes behind the
// length are not sent.
std::vector<uint8_t> givenBlock(const Arguments &arguments) {
    std::vector<uint8_t> bytes = bytesGiven(arguments, "OPTIONS");
    uint32_t length = 0;
    if (!arguments.given("--file")) {
        length = static_cast<uint32_t>(kLengthSize + bytes.size());
        bytes.insert(bytes.begin(), kLengthSize, 0);
        std::memcpy(bytes.data(), &length, sizeof length);
        return bytes;
    }
    if (bytes.size() != VSHYP_RUNTIME_OPTIONS_SIZE)
        fail(Exit::Usage, "--file: {} bytes, a block has {}", bytes.size(), VSHYP_RUNTIME_OPTIONS_SIZE);
    std::memcpy(&length, bytes.data(), sizeof length);
    if (length < kLengthSize || length > bytes.size())
        fail(Exit::Usage, "--file: the block says that it is {} bytes long, 4 to {} fit", length,
             bytes.size());
    bytes.resize(length);
    return bytes;
}

void set(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> block = givenBlock(arguments);
    std::vector<uint32_t> words((block.size() + sizeof(uint32_t) - 1) / sizeof(uint32_t));
    std::memcpy(words.data(), block.data(), block.size());
    // Only the module knows which options a block changes.
    const VshypBuffer before = readBlock({});
    require(call<VSHYP_SetRuntimeOptions>(words.data()), kWhat);
    const VshypBuffer after = readBlock({});
    reportChange(out, "host", {}, std::memcmp(before.get(), after.get(), VSHYP_RUNTIME_OPTIONS_SIZE) != 0);
}

void requireBlock(const Arguments &arguments) {
    oneGiven(arguments, {"OPTIONS", "--file"});
}

const Command kRows[] = {
    {.words = "options get",
     .summary = "show the options of the switch module",
     .arguments = {{.name = "ID",
                    .summary = "number of an option, 16 bits; without any, all are shown",
                    .optional = true,
                    .repeated = true,
                    .check = checkNumber<0, UINT16_MAX>}},
     .more = kListOptions,
     .details = "The block is the kernel's own, 4096 bytes.",
     .example = "qvs options get 7 --raw option.bin",
     .run = reads(get, touchesNothing),
     .agrees = choosesWithin<kOptions>},
    {.words = "options set",
     .summary = "change options of the switch module",
     .arguments = {{.name = "OPTIONS",
                    .summary = "the bytes behind the block's length, as pairs of hexadecimal digits",
                    .optional = true,
                    .check = checkHex}},
     .options = {{"--file", "FILE", "a whole block (- for standard input), as --raw writes it", Kind::File}},
     .details = "A block begins with its length, 32 bits; what follows is the kernel's own.",
     .example = "qvs options set '0700 0400 01000000'",
     .run = writes(set, touchesNothing),
     .agrees = requireBlock},
};

}  // namespace

const std::span<const Command> kOptionsCommands = kRows;

}  // namespace qvs::cli
