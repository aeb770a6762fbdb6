// SPDX-License-Identifier: Apache-2.0
// qvs ipfix: what the kernel counted when it sampled flows.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "views/nouns.h"

namespace qvs::cli {
namespace {

void stats(const Arguments &arguments, Output &out) {
    const char *alias = arguments.text("SWITCH").c_str();
    std::array<uint8_t, IPFIXHYP_STATS_SIZE> stats{};
    if (arguments.given("PORT")) requireFits(kPortIdLimit, arguments.text("PORT"));
    require(arguments.given("PORT")
                ? call<IPFIXHYP_GetIpfixGranularStats>(alias, arguments.text("PORT").c_str(), stats.data())
                : call<IPFIXHYP_GetIpfixStats>(alias, stats.data()),
            named(arguments));
    printRecord(arguments, out, {"flow-stats", "stats", "flow statistics"}, stats);
}

const Command kRows[] = {
    {.words = "ipfix stats",
     .summary = "show the flow statistics of a switch or of one of its ports",
     .arguments = {kSwitchArgument, {"PORT", "identifier of the port", Kind::Port, true}},
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 192 bytes.",
     .example = "qvs ipfix stats sw1 port0",
     .run = reads(stats)},
};

}  // namespace

const std::span<const Command> kIpfixStatsCommands = kRows;

}  // namespace qvs::cli
