// qvs dump: the library's own rendering of the snapshot.
#include <qvs/qvs.h>

#include <cstring>

#include "command.h"
#include "failure.h"
#include "library.h"
#include "output.h"
#include "snapshot.h"

namespace qvs::cli {
namespace {

void dump(const Arguments &arguments, Output &out) {
    const char *alias = arguments.orNull("SWITCH");
    if (alias != nullptr) findVswitch(alias);
    char *raw = nullptr;
    require(call("NetDVS_Dump", NetDVS_Dump, alias, &raw),
            alias != nullptr ? "switch " + inQuotes(alias) : std::string("switches"));
    NetdvsText text(raw);
    out.write(std::string_view(text.get()));
}

const Command kRows[] = {
    {.noun = "dump",
     .verb = nullptr,
     .access = Access::Reads,
     .json = false,
     .summary = "print switches, ports and their properties with every field named",
     .arguments = {{"SWITCH", "alias of the one switch to print", Kind::Switch, true}},
     .options = {},
     .details = "The properties in JSON: qvs prop list SWITCH --all --json.",
     .example = "qvs dump sw1",
     .run = dump},
};

}  // namespace

const std::span<const Command> kDumpCommands = kRows;

}  // namespace qvs::cli
