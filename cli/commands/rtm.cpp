// SPDX-License-Identifier: Apache-2.0
// qvs rtm: operations on the route-table module.
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

// The library sends as many bytes as the count at the start of the block says. The block must have that many.
template <auto Send, uint64_t entrySize, uint64_t fixedSize>
void sendBlock(const Arguments &arguments, Output &out) {
    uint32_t command = arguments.number("COMMAND", 0);
    std::vector<uint8_t> bytes = bytesGiven(arguments, "BLOCK");
    uint32_t count = 0;
    if (bytes.size() >= sizeof count) std::memcpy(&count, bytes.data(), sizeof count);
    uint64_t needed = count * entrySize + fixedSize;
    if (bytes.size() != needed)
        fail(Exit::Usage, "BLOCK: {} bytes, one that counts {} has {}", bytes.size(), count, needed);
    std::vector<uint32_t> words((bytes.size() + sizeof(uint32_t) - 1) / sizeof(uint32_t));
    std::memcpy(words.data(), bytes.data(), bytes.size());
    require(call<Send>(words.data(), command), "route table");
    reportChange(out, "route table", {}, true);
}

void port(const Arguments &arguments, Output &out) {
    uint32_t first = arguments.number("FIRST", 0);
    uint32_t second = arguments.number("SECOND", 0);
    uint32_t flag = arguments.number("--flag", 0);
    require(call<VSHYP_RTMPortOp>(first, second, static_cast<uint8_t>(flag)), "route table");
    reportChange(out, "route table", {}, true);
}

void requireBlock(const Arguments &arguments) {
    oneGiven(arguments, {"BLOCK", "--file"});
}

constexpr Argument kCommandArgument{
    .name = "COMMAND", .summary = "number of the operation, 32 bits", .check = checkNumber<0, UINT32_MAX>};
constexpr Argument kBlock{.name = "BLOCK",
                          .summary = "the block as pairs of hexadecimal digits",
                          .optional = true,
                          .check = checkHex};
constexpr Option kBlockFile{"--file", "FILE", "the block in FILE (- for standard input)", Kind::File};

const Command kRows[] = {
    {.words = "rtm op",
     .summary = "send an operation on routes",
     .arguments = {kCommandArgument, kBlock},
     .options = {kBlockFile},
     .details =
         "A block is a count, 32 bits, and count * 136 + 5 bytes more; what they mean is the module's.",
     .example = "qvs rtm op 1 --file routes.bin",
     .run = writes(sendBlock<VSHYP_RTMOp, 136, 9>, touchesNothing),
     .agrees = requireBlock},
    {.words = "rtm mod",
     .summary = "send a modification of routes",
     .arguments = {kCommandArgument, kBlock},
     .options = {kBlockFile},
     .details =
         "A block is a count, 32 bits, and count * 5 + 128 bytes more; what they mean is the module's.",
     .example = "qvs rtm mod 2 --file changes.bin",
     .run = writes(sendBlock<VSHYP_RTMModOp, 5, 132>, touchesNothing),
     .agrees = requireBlock},
    {.words = "rtm port",
     .summary = "send an operation on a port",
     .arguments = {{.name = "FIRST",
                    .summary = "first word of the operation, 32 bits",
                    .check = checkNumber<0, UINT32_MAX>},
                   {.name = "SECOND",
                    .summary = "second word of the operation, 32 bits",
                    .check = checkNumber<0, UINT32_MAX>}},
     .options = {{.name = "--flag",
                  .value = "N",
                  .summary = "the flag behind them, 8 bits (0)",
                  .check = checkNumber<0, UINT8_MAX>}},
     .example = "qvs rtm port 67108865 100 --flag 1",
     .run = writes(port, touchesNothing)},
};

}  // namespace

const std::span<const Command> kRouteTableCommands = kRows;

}  // namespace qvs::cli
