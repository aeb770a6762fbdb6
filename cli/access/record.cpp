// SPDX-License-Identifier: Apache-2.0
#include "access/record.h"

#include <algorithm>
#include <string_view>

#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/run.h"

namespace qvs::cli {
namespace {

// Whether a call changes something that is not stored in a switch that it names.
bool changesOther(const Call &call) {
    const Run &run = call.command->run;
    if (run.isLasting) return true;
    if (run.access != Access::Writes) return false;
    const bool namesSwitch = call.arguments.given("SWITCH") || call.arguments.given("ALIAS");
    return !namesSwitch || (run.touches != nullptr && run.touches(call.arguments).empty());
}

bool isCreated(const config::Recorder &recorder, std::string_view alias) {
    const auto &switches = recorder.before().switches;
    return std::any_of(switches.begin(), switches.end(), [&](const auto &sw) { return sw.alias == alias; });
}

void recordNew(config::Recorder &recorder, const Arguments &arguments) {
    const std::string &alias = arguments.text("ALIAS");
    recorder.newSwitch(arguments.given("--id") ? arguments.text("--id") : config::defaultSwitchId(alias),
                       alias, arguments.given("--portset") ? arguments.text("--portset") : alias);
}

}  // namespace

void recordSwitches(config::Recorder &recorder, const Call &call) {
    const std::string_view words = call.command->words;
    if (changesOther(call)) fail(Exit::Usage, "qvs {} cannot be undone", words);
    if (call.command->run.access != Access::Writes) return;
    const bool creates = call.arguments.given("ALIAS");
    const std::string &name = call.arguments.text(creates ? "ALIAS" : "SWITCH");
    DVSSwitch *sw =
        call.arguments.given("--by-id") ? findSwitchById(name) : DVSState_SwitchFindByAlias(name.c_str());
    if (sw != nullptr) recorder.wholeSwitch(sw);
    if (sw != nullptr && (words == "mtu set" || words == "mtu clear")) recorder.mtu(sw);
    if (creates) recordNew(recorder, call.arguments);
    if (sw == nullptr && words == "switch destroy" && !isCreated(recorder, name) &&
        !call.arguments.given("--if-exists"))
        fail(Exit::Usage, "{} is no whole switch, so that its removal cannot be undone", named(name));
}

}  // namespace qvs::cli
