// qvs rarp, teaming stats: what the kernel counted when it moved ports from one uplink to another.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "tool/command.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

template <size_t size>
void show(const Arguments &arguments, Output &out, std::string_view name,
          HYP_ReturnStatus (*get)(const char *, void *), const char *label) {
    const std::string &alias = arguments.text("SWITCH");
    std::string portset = portsetOf(alias);
    std::array<uint8_t, size> stats{};
    require(call(name, get, portset.c_str(), stats.data()), "switch " + inQuotes(alias) + ": " + label);
    printRecord(arguments, out, "stats", label, stats);
}

void rarp(const Arguments &arguments, Output &out) {
    show<VSHYP_RARP_STATS_SIZE>(arguments, out, "VSHYP_GetRARPStats", VSHYP_GetRARPStats,
                                "reverse-ARP statistics");
}

void servicePorts(const Arguments &arguments, Output &out) {
    show<VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE>(arguments, out, "VSHYP_GetServicePortTeamingStats",
                                                VSHYP_GetServicePortTeamingStats, "teaming statistics");
}

const Command kRows[] = {
    {.words = "rarp",
     .summary = "show what a switch announced by reverse ARP",
     .arguments = {kSwitchArgument},
     .options = {kRaw},
     .details = "The statistics are the kernel's own, 16 bytes, and are shown as they are.",
     .example = "qvs rarp sw1",
     .run = reads(rarp)},
    {.words = "teaming stats",
     .summary = "show the teaming statistics of a switch's service ports",
     .arguments = {kSwitchArgument},
     .options = {kRaw},
     .details = "The statistics are the kernel's own, 48 bytes, and are shown as they are.",
     .example = "qvs teaming stats sw1",
     .run = reads(servicePorts)},
};

}  // namespace

const std::span<const Command> kTeamingStatsCommands = kRows;

}  // namespace qvs::cli
