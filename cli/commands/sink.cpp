// SPDX-License-Identifier: Apache-2.0
// qvs port sink: the flag of the receive filter that makes a port receive frames for unknown destinations.
#include <qvs/qvs.h>

#include "access/library.h"
#include "access/setting.h"
#include "commands/nouns.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

using config::kFilter;

bool isSink(const config::Target &target) {
    uint8_t enabled = 0;
    require(call<VSDVS_IsSinkPortEnabled>(target.alias.c_str(), target.port.c_str(), &enabled),
            namedSetting(kFilter, target));
    return enabled != 0;
}

void get(const Arguments &arguments, Output &out) {
    const config::Target target = targetOf(kFilter, arguments);
    Record record(out);
    describe(record, target);
    record.field("enabled", "enabled", Flag{isSink(target), "on", "off"});
    record.field("stored", "stored", Flag{isStored(storedOf(kFilter, target.place))});
    record.finish();
}

void set(const Arguments &arguments, Output &out) {
    const bool on = chosen(arguments, "STATE", kOffOn) != 0;
    const config::Target target = targetOf(kFilter, arguments);
    const bool changed = isSink(target) != on;
    if (changed)
        require(call<VSDVS_ConfigureSinkPort>(target.alias.c_str(), target.port.c_str(), on),
                namedSetting(kFilter, target));
    reportSetting(out, target, changed);
}

const Command kRows[] = {
    {.words = "port sink get",
     .summary = "show whether a port is a sink port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port sink get sw1 port0",
     .run = reads(get, touches<kFilter>)},
    {.words = "port sink set",
     .summary = "make a port a sink port, or an ordinary one",
     .arguments = {kSwitchArgument,
                   kPortArgument,
                   {.name = "STATE", .summary = "on or off", .choices = kOffOn}},
     .details = "The rest of the port's filter is kept.",
     .example = "qvs port sink set sw1 port0 on",
     .run = writes(set, touches<kFilter>)},
};

}  // namespace

const std::span<const Command> kSinkCommands = kRows;

}  // namespace qvs::cli
