// qvs ipfix: what the kernel counted when it sampled flows.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

void stats(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    std::array<uint8_t, IPFIXHYP_STATS_SIZE> stats{};
    if (arguments.given("PORT")) {
        const std::string &port = arguments.text("PORT");
        requireFits(kPortIdLimit, port);
        require(call("IPFIXHYP_GetIpfixGranularStats", IPFIXHYP_GetIpfixGranularStats, alias.c_str(),
                     port.c_str(), stats.data()),
                "switch " + inQuotes(alias) + ": port " + inQuotes(port));
    } else {
        require(call("IPFIXHYP_GetIpfixStats", IPFIXHYP_GetIpfixStats, alias.c_str(), stats.data()),
                "switch " + inQuotes(alias));
    }
    printRecord(arguments, out, "stats", "flow statistics", stats);
}

const Command kRows[] = {
    {.words = "ipfix stats",
     .summary = "show the flow statistics of a switch or of one of its ports",
     .arguments = {kSwitchArgument, {"PORT", "identifier of the port", Kind::Port, true}},
     .options = {kRaw},
     .details = "The statistics are the kernel's own, 192 bytes, and are shown as they are.",
     .example = "qvs ipfix stats sw1 port0",
     .run = reads(stats)},
};

}  // namespace

const std::span<const Command> kIpfixStatsCommands = kRows;

}  // namespace qvs::cli
