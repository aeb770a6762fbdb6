// SPDX-License-Identifier: Apache-2.0
// qvs mirror runtime: the mirror sessions as the kernel runs them.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "config/library/snapshot.h"
#include "tool/output.h"
#include "tool/values.h"
#include "views/nouns.h"

namespace qvs::cli {
namespace {

constexpr RecordKind kDestination{"mirror-destination", "entry", "destination"};
constexpr Limit kSessionLimit{"mirror session", VSHYP_MIRROR_SESSION_ID_SIZE};

void ids(const Arguments &arguments, Output &out) {
    auto ask = [&] {
        return fetched<VSHYP_GetDVMirrorSessionIDs>(named(arguments), arguments.text("SWITCH").c_str());
    };
    KernelList list = boundedList(ask, VSHYP_MIRROR_SESSION_ID_SIZE, "mirror sessions");
    Listing listing(out, {{"session", "SESSION"}});
    for (uint32_t i = 0; i < list.count; i++)
        listing.row(boundedText(list.entry(i).data(), VSHYP_MIRROR_SESSION_ID_SIZE));
    listing.finish();
}

void destinations(const Arguments &arguments, Output &out) {
    auto ask = [&] {
        return fetched<VSHYP_GetPromiscSessionActiveDsts>(named(arguments), arguments.text("SWITCH").c_str());
    };
    printList(arguments, out, boundedList(ask, VSHYP_PROMISC_DST_SIZE, "destinations"), kDestination);
}

void stats(const Arguments &arguments, Output &out) {
    const std::string &id = arguments.text("SESSION");
    std::array<uint8_t, VSHYP_MIRROR_STATS_SIZE> stats{};
    require(call<VSHYP_GetDVMirrorSessionStats>(arguments.text("SWITCH").c_str(), id.c_str(), stats.data()),
            named(arguments) + ": mirror session " + inQuotes(id));
    printRecord(arguments, out, {"mirror-session-stats", "stats", "session statistics"}, stats);
}

void agent(const Arguments &arguments, Output &out) {
    std::array<uint8_t, VSHYP_MIRROR_AGENT_STATS_SIZE> stats{};
    require(call<VSHYP_GetDVMirrorAgentWorldStats>(stats.data()), "mirror agent");
    printRecord(arguments, out, {"mirror-agent-stats", "stats", "agent statistics"}, stats);
}

const Command kRows[] = {
    {.words = "mirror runtime ids",
     .summary = "list the mirror sessions that the kernel runs for a switch",
     .arguments = {kSwitchArgument},
     .details = "Those of its ports and of this host's uplinks, each once.",
     .example = "qvs mirror runtime ids sw1",
     .run = reads(ids)},
    {.words = "mirror runtime destinations",
     .summary = "list where the frames of a switch's promiscuous session go at present",
     .arguments = {kSwitchArgument},
     .more = kListOptions,
     .details = "The destinations are the kernel's own, 4 bytes each.",
     .example = "qvs mirror runtime destinations sw1",
     .run = reads(destinations),
     .agrees = choosesFrom<kDestination>},
    {.words = "mirror runtime stats",
     .summary = "show the statistics of a mirror session",
     .arguments = {kSwitchArgument,
                   {.name = "SESSION",
                    .summary = "identifier of the session; the kernel is asked for its first 31 bytes",
                    .kind = Kind::Session,
                    .check = checkFits<kSessionLimit>}},
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 121 bytes.",
     .example = "qvs mirror runtime stats sw1 capture",
     .run = reads(stats)},
    {.words = "mirror runtime agent",
     .summary = "show the statistics of this host's mirror agent",
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 76 bytes.",
     .example = "qvs mirror runtime agent",
     .run = reads(agent, touchesNothing)},
};

}  // namespace

const std::span<const Command> kMirrorRuntimeCommands = kRows;

}  // namespace qvs::cli
