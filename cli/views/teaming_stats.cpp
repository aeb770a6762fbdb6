// SPDX-License-Identifier: Apache-2.0
// qvs rarp, teaming stats: what the kernel counted when it moved ports from one uplink to another.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "config/library/snapshot.h"
#include "tool/output.h"
#include "views/nouns.h"

namespace qvs::cli {
namespace {

template <auto Get, size_t size>
void show(const Arguments &arguments, Output &out, const char *record, const char *label) {
    const std::string &alias = arguments.text("SWITCH");
    std::string portset = portsetOf(alias);
    std::array<uint8_t, size> stats{};
    require(call<Get>(portset.c_str(), stats.data()), named(alias) + ": " + label);
    printRecord(arguments, out, {record, "stats", label}, stats);
}

void rarp(const Arguments &arguments, Output &out) {
    show<VSHYP_GetRARPStats, VSHYP_RARP_STATS_SIZE>(arguments, out, "rarp-stats", "reverse-ARP statistics");
}

void servicePorts(const Arguments &arguments, Output &out) {
    show<VSHYP_GetServicePortTeamingStats, VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE>(
        arguments, out, "teaming-stats", "teaming statistics");
}

const Command kRows[] = {
    {.words = "rarp",
     .summary = "show what a switch announced by reverse ARP",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 16 bytes.",
     .example = "qvs rarp sw1",
     .run = reads(rarp)},
    {.words = "teaming stats",
     .summary = "show the teaming statistics of a switch's service ports",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .details = "The statistics are the kernel's own, 48 bytes.",
     .example = "qvs teaming stats sw1",
     .run = reads(servicePorts)},
};

}  // namespace

const std::span<const Command> kTeamingStatsCommands = kRows;

}  // namespace qvs::cli
