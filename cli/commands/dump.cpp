// SPDX-License-Identifier: Apache-2.0
// qvs dump: the library's own rendering of the snapshot.
#include <qvs/qvs.h>

#include <algorithm>
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

void dump(const Arguments &arguments, Output &out) {
    const char *alias = arguments.orNull("SWITCH");
    if (alias != nullptr) findVswitch(alias);
    char *raw = nullptr;
    require(call<NetDVS_Dump>(alias, &raw), alias != nullptr ? named(alias) : std::string("switches"));
    NetdvsText text(raw);
    if (out.terminal()) return writeShown(out, text.get());
    out.write(std::string_view(text.get()));
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
