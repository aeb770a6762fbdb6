// SPDX-License-Identifier: Apache-2.0
// qvs dump: the library's own rendering of the snapshot.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

#include "access/library.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

// Writes text to a terminal: control characters, except tabs and line ends, are escaped.
void writeShown(Output &out, std::string_view text) {
    while (!text.empty()) {
        const size_t end = std::min(text.find_first_of("\n\t"), text.size());
        appendShown(out.buffer(), text.substr(0, end));
        out.write(text.substr(end, 1));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

// Tells whether the end of a text is as near to the end of its memory as it is after a piece was dropped. The
// library doubles the memory up to 2^31 - 1 bytes, drops a piece of at most 4095 characters that does not
// fit, and reports success.
bool isFull(size_t length) {
    constexpr size_t kMost = std::numeric_limits<int32_t>::max();
    constexpr size_t kLongestPiece = 4095;
    size_t memory = 4096;
    while (memory <= length && memory < kMost)
        memory = std::min(2 * memory, kMost);
    return length + 1 + kLongestPiece > memory;
}

// Tells whether a text has all ports, and the last property of the last one.
bool isWhole(std::string_view text, const char *alias) {
    constexpr std::string_view kHead = "\n\tport ";
    size_t missing = 0;
    std::string_view lastKey;
    forEachSwitch([&](DVSSwitch *sw) {
        if (alias != nullptr && findSwitch(alias) != sw) return true;
        forEachPort(sw, [&](DVSPort *port) {
            ++missing;
            lastKey = {};
            forEachProperty(placeOf(port), [&](const Property &property) {
                lastKey = property.key;
                return true;
            });
            return true;
        });
        return true;
    });
    size_t last = 0;
    for (size_t at = 0; missing != 0 && (at = text.find(kHead, at)) != text.npos; last = ++at)
        --missing;
    return missing == 0 && text.find(lastKey, last) != text.npos;
}

void dump(const Arguments &arguments, Output &out) {
    const char *alias = arguments.orNull("SWITCH");
    if (alias != nullptr) findVswitch(alias);
    char *raw = nullptr;
    require(call<NetDVS_Dump>(alias, &raw), alias != nullptr ? named(alias) : std::string("switches"));
    NetdvsText text(raw);
    const std::string_view shown = text.get();
    if (isFull(shown.size()) && !isWhole(shown, alias)) {
        complain("the dump is incomplete: {}; print one switch, or use: qvs prop list SWITCH --all",
                 shown.size() > std::numeric_limits<int32_t>::max() / 2 ? "it would be longer than 2 GiB"
                                                                        : "memory ran out");
    }
    if (out.terminal()) return writeShown(out, shown);
    out.write(shown);
}

const Command kRows[] = {
    {.words = "dump",
     .summary = "print switches, ports and their properties with every field named",
     .arguments = {{"SWITCH", "alias of the one switch to print", Kind::Switch, true}},
     .details = "Bytes of stored texts that are no text are escaped on a terminal, and stay as they are in a "
                "file or a pipe. The properties in JSON: qvs prop list SWITCH --all --json.",
     .example = "qvs dump sw1",
     .json = false,
     .run = reads(dump)},
};

}  // namespace

const std::span<const Command> kDumpCommands = kRows;

}  // namespace qvs::cli
