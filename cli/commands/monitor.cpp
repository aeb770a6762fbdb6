// SPDX-License-Identifier: Apache-2.0
// qvs monitor: the changes of the host as they happen.
#include <chrono>

#include "access/changes.h"
#include "access/pace.h"
#include "commands/nouns.h"
#include "config/document/watch.h"
#include "config/library/clock.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

using config::Change;
using config::Watch;
using std::chrono::milliseconds;

constexpr milliseconds kInterval(200);

// Writes one line at once: the time, and what the function appends as text or as members of a JSON object.
template <typename Text, typename Members>
void printLine(Output &out, Text text, Members members) {
    const std::string time = utcTime(true);
    if (out.json()) {
        out.write("{\"time\":\"" + time + "\",");
        members(out.buffer());
        out.write("}\n");
    } else {
        out.write(time + " ");
        text(out.buffer());
        out.write("\n");
    }
    out.flush();
}

void printHost(Output &out, std::string_view word, std::string_view text) {
    printLine(
        out, [&](fmt::memory_buffer &buffer) { buffer.append(text); },
        [&](fmt::memory_buffer &buffer) { appendNoChangeMembers(buffer, word); });
}

void print(Output &out, const Change &change) {
    printLine(
        out, [&](fmt::memory_buffer &buffer) { buffer.append(lineOf(change)); },
        [&](fmt::memory_buffer &buffer) { appendChangeMembers(buffer, change); });
}

void monitor(const Arguments &arguments, Output &out) {
    const milliseconds time = intervalGiven(arguments, kInterval);
    Watch watch(arguments.given("SWITCH") ? arguments.all("SWITCH") : std::vector<std::string>());
    endOnSignals();
    printHost(out, "watching",
              fmt::format("watching {} switch{}", watch.switches(), watch.switches() == 1 ? "" : "es"));
    for (bool gone = false;;) {
        pause(time);
        const HYP_ReturnStatus status = watch.look();
        if (status == HYP_OK && gone) printHost(out, "back", "the host is back");
        if (status != HYP_OK && !gone)
            printHost(out, "gone", fmt::format("the host is gone: {}", ReturnStatusToString(status)));
        gone = status != HYP_OK;
        for (const Change &change : watch.changes())
            print(out, change);
    }
}

const Command kRows[] = {
    {.words = "monitor",
     .summary = "print changes of the configuration and of link states as they happen",
     .arguments = {{"SWITCH", "aliases of the switches to watch; all without one", Kind::Switch, true, true}},
     .options = {intervalOption("look at the host so often; a fraction is allowed (0.2)")},
     .details =
         "Each line has the time (UTC), the place in the document (qvs export), and the value before and "
         "after. The link state of a port is its member link. The command compares the state of the host "
         "with the state of its last look: a change that is shorter than the "
         "interval is not seen. What changed earlier is not recorded: qvs checkpoint save keeps a state, and "
         "qvs checkpoint diff lists what is different since. When the host ends, a line says so, and the "
         "command goes on when it is back. "
         "It ends with SIGINT or SIGTERM, with exit status 0, or when nobody reads its output any more.",
     .example = "qvs monitor sw1 --interval 1",
     .run = reads(monitor)},
};

}  // namespace

const std::span<const Command> kMonitorCommands = kRows;

}  // namespace qvs::cli
