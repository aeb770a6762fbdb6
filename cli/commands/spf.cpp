// SPDX-License-Identifier: Apache-2.0
// qvs spf: the ports of the SPF data path.
#include <qvs/qvs.h>

#include <cerrno>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

// These calls set errno to a status, or to ENOMEM when memory was short.
HYP_ReturnStatus leftStatus() {
    return errno == ENOMEM ? HYP_NO_MEMORY : static_cast<HYP_ReturnStatus>(errno);
}

std::string outcome(void *answer) {
    return answer != nullptr ? "..." : "null, " + trace::statusText(leftStatus());
}

template <auto Function, typename... Arguments>
HeapBuffer fetchSpf(std::string_view subject, Arguments... arguments) {
    HeapBuffer answer(traced<Function>(outcome, arguments...));
    if (!answer) throw libraryFailure(subject, leftStatus());
    return answer;
}

constexpr RecordKind kSpfPort{"spf-port", "entry", "port"};

void list(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    auto ask = [&] { return fetchSpf<SPFHYP_GetPortsList>(named(alias), alias.c_str()); };
    printList(arguments, out, boundedList(ask, SPFHYP_PORT_ENTRY_SIZE, "ports"), kSpfPort);
}

void switchStats(const Arguments &arguments, Output &out) {
    const std::string &alias = arguments.text("SWITCH");
    HeapBuffer stats = fetchSpf<SPFHYP_GetSPFPortStats>(named(alias), alias.c_str());
    printRecord(arguments, out, {"spf-switch-stats", "stats", "statistics"},
                recordIn(stats, SPFHYP_SPF_STATS_SIZE));
}

constexpr char kGuestStats[] = "spf-guest-stats";
constexpr char kServiceStats[] = "spf-service-stats";

template <auto Get, size_t size, const char *record>
void portStats(const Arguments &arguments, Output &out) {
    uint32_t number = portNumber(arguments.text("SWITCH"), arguments.text("PORT"));
    HeapBuffer stats = fetchSpf<Get>(named(arguments), number);
    printRecord(arguments, out, {record, "stats", "statistics"}, recordIn(stats, size));
}

void failures(const Arguments &arguments, Output &out) {
    HeapBuffer stats = fetchSpf<SPFHYP_GetConfigFailureStats>("configuration failures");
    printRecord(arguments, out, {"spf-failures", "failures", "failures"},
                recordIn(stats, SPFHYP_CONFIG_FAILURE_STATS_SIZE));
}

// The name that a request carries. Every identifier fits into the field, but not every portset name.
const char *sentName(const Arguments &arguments) {
    const std::string &alias = arguments.text("SWITCH");
    const std::string &port = arguments.text("PORT");
    requireFits(kPortIdLimit, port);
    DVSSwitch *sw = findVswitch(alias);
    findPort(sw, alias, port);
    return DVS_SwitchId(sw);
}

void checkMac(std::string_view, const std::string &text) {
    if (!parseMac(text)) fail(Exit::Usage, "{} is no MAC address, like 02:00:00:00:00:01", inQuotes(text));
}

void plumb(const Arguments &arguments, Output &out) {
    const std::string &mac = arguments.text("MAC");
    require(
        call<SPFHYP_PlumbSpfPort>(sentName(arguments), arguments.text("PORT").c_str(), nullptr, mac.c_str()),
        named(arguments));
    reportPort(out, arguments.text("SWITCH"), arguments.text("PORT"), true);
}

void unplumb(const Arguments &arguments, Output &out) {
    HYP_ReturnStatus status =
        call<SPFHYP_UnPlumbSpfPort>(sentName(arguments), arguments.text("PORT").c_str());
    const bool absent = status == HYP_NOT_FOUND && arguments.given("--if-exists");
    if (!absent) require(status, named(arguments));
    reportPort(out, arguments.text("SWITCH"), arguments.text("PORT"), !absent);
}

std::vector<std::string> touchedPort(const Arguments &arguments) {
    return {touchedPath({arguments.text("SWITCH"), "port", arguments.text("PORT"), "spf"})};
}

const Command kRows[] = {
    {.words = "spf list",
     .summary = "list the ports of a switch that are plumbed into the data path",
     .arguments = {kSwitchArgument},
     .more = kListOptions,
     .details = "The entries are the kernel's own, 8 bytes each.",
     .example = "qvs spf list sw1",
     .run = reads(list),
     .agrees = choosesFrom<kSpfPort>},
    {.words = "spf stats switch",
     .summary = "show the data path's statistics of a switch",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .example = "qvs spf stats switch sw1",
     .run = reads(switchStats)},
    {.words = "spf stats gvm",
     .summary = "show the data path's statistics of a guest's port",
     .arguments = {kSwitchArgument, kPortArgument},
     .more = kRecordOptions,
     .example = "qvs spf stats gvm sw1 port0",
     .run = reads(portStats<SPFHYP_GetGVMPortStats, SPFHYP_GVM_STATS_SIZE, kGuestStats>)},
    {.words = "spf stats svm",
     .summary = "show the data path's statistics of a service's port",
     .arguments = {kSwitchArgument, kPortArgument},
     .more = kRecordOptions,
     .example = "qvs spf stats svm sw1 port1",
     .run = reads(portStats<SPFHYP_GetSVMPortStats, SPFHYP_SVM_STATS_SIZE, kServiceStats>)},
    {.words = "spf plumb",
     .summary = "plumb a port into the data path",
     .arguments = {kSwitchArgument,
                   kPortArgument,
                   {.name = "MAC",
                    .summary = "address of the port, like 02:00:00:00:00:01",
                    .check = checkMac}},
     .example = "qvs spf plumb sw1 port1 02:00:00:00:01:01",
     .run = lasting(writes(plumb, touchedPort))},
    {.words = "spf unplumb",
     .summary = "take a port out of the data path",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {kIfExists},
     .example = "qvs spf unplumb sw1 port1",
     .run = lasting(writes(unplumb, touchedPort))},
    {.words = "spf failures",
     .summary = "show how often plumbing failed",
     .more = kRecordOptions,
     .example = "qvs spf failures",
     .run = reads(failures, touchesNothing)},
};

}  // namespace

const std::span<const Command> kSpfCommands = kRows;

}  // namespace qvs::cli
