// SPDX-License-Identifier: Apache-2.0
// qvs mac: the MAC tables of the running switch, and how it learns.
#include <qvs/qvs.h>

#include <array>
#include <string>

#include "access/library.h"
#include "access/opaque.h"
#include "commands/mac.h"
#include "commands/nouns.h"
#include "config/library/snapshot.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

// --- tables ---

constexpr RecordKind kMacEntry{"mac-entry", "entry", "entry"};
constexpr RecordKind kStaticContext{"static-context", "entry", "context"};
constexpr RecordKind kSecurityEntry{"port-security", "entry", "entry"};
constexpr RecordKind kPortLearning{"port-learning", "entry", "entry"};
constexpr RecordKind kLearningStats{"learning-stats", "entry", "entry"};

void checkAddress(std::string_view name, const std::string &text) {
    const auto bytes = parseHex(text);
    if (!bytes || bytes->empty() || bytes->size() > std::tuple_size_v<MacAddress>)
        fail(Exit::Usage, "{}: {} is not a MAC address, like 02:00:00:00:00:01, or the beginning of one",
             name, inQuotes(text));
}

void table(const Arguments &arguments, Output &out) {
    const char *alias = arguments.text("SWITCH").c_str();
    const char *port = macPort(arguments);
    const bool team = arguments.given("--team");
    const auto selector = static_cast<uint8_t>(arguments.number("--selector", 0));

    const std::string subject = named(arguments);
    auto ask = [&] {
        if (port != nullptr) return fetched<VSHYP_GetPortMACTable>(subject, alias, port, selector);
        if (team) return fetched<VSHYP_GetTeamMACTable>(subject, alias, selector);
        return fetched<VSHYP_GetMACTable>(subject, alias, selector);
    };
    KernelList list = boundedList(ask, VSHYP_MAC_ENTRY_SIZE, "MAC entries");
    printList(arguments, out, list, kMacEntry);
}

void contexts(const Arguments &arguments, Output &out) {
    const char *alias = arguments.text("SWITCH").c_str();
    const char *port = macPort(arguments);
    const std::string subject = named(arguments);
    auto ask = [&] {
        if (port == nullptr) return fetched<VSHYP_GetStaticLectx>(subject, alias);
        return fetched<VSHYP_GetPortStaticLectx>(subject, alias, port);
    };
    printList(arguments, out, boundedList(ask, VSHYP_STATIC_LECTX_SIZE, "static learning contexts"),
              kStaticContext);
}

// --- learning ---

void info(const Arguments &arguments, Output &out) {
    std::array<uint8_t, VSHYP_MAC_LEARNING_INFO_SIZE> info{};
    require(call<VSHYP_GetSwitchMACLearningInfo>(portsetOf(arguments.text("SWITCH")).c_str(), info.data()),
            named(arguments));
    printRecord(arguments, out, {"learning-info", "info", "learning information"}, info);
}

template <auto Query>
void listOf(const Arguments &arguments, Output &out, size_t entrySize, const char *what,
            const RecordKind &kind) {
    auto ask = [&] { return fetched<Query>(named(arguments), arguments.text("SWITCH").c_str()); };
    printList(arguments, out, boundedList(ask, entrySize, what), kind);
}

void ports(const Arguments &arguments, Output &out) {
    listOf<VSHYP_GetMACLearningAllPorts>(arguments, out, VSHYP_PORT_MAC_LEARNING_SIZE, "ports",
                                         kPortLearning);
}

void stats(const Arguments &arguments, Output &out) {
    const char *port = macPort(arguments);
    if (port == nullptr)
        return listOf<VSHYP_GetSwitchMACLearningStats>(arguments, out, VSHYP_MAC_LEARNING_STATS_SIZE, "ports",
                                                       kLearningStats);
    std::array<uint8_t, VSHYP_MAC_LEARNING_STATS_SIZE> stats{};
    require(call<VSHYP_GetPortMACLearningStats>(port, arguments.text("SWITCH").c_str(), stats.data()),
            named(arguments));
    printRecord(arguments, out, {kLearningStats.name, "stats", "learning statistics"}, stats);
}

void security(const Arguments &arguments, Output &out) {
    listOf<VSHYP_GetL2Security>(arguments, out, VSHYP_L2_SECURITY_SIZE, "security entries", kSecurityEntry);
}

constexpr const char *kHostProps = "host-wide learning properties";

VSHYP_GlobalMACLearningProps readProps() {
    VSHYP_GlobalMACLearningProps props{};
    require(call<VSHYP_GetGlobalMACLearningProps>(&props), kHostProps);
    return props;
}

void get(const Arguments &arguments, Output &out) {
    VSHYP_GlobalMACLearningProps props = readProps();
    const RecordKind kind{"learning-properties", "properties", kHostProps};
    const auto fields =
        decoded(arguments, out, kind, {reinterpret_cast<const uint8_t *>(&props), sizeof props});
    Record record(out);
    if (fields && !out.json()) {
        addFields(record, *fields);
        return record.finish();
    }
    record.field("first", "first", uint64_t{props.first});
    record.field("second", "second", uint32_t{props.second});
    record.member("fields", fields);
    record.finish();
}

void set(const Arguments &arguments, Output &out) {
    uint64_t first = wideNumber(arguments, "--first");
    uint32_t second = arguments.number("--second", 0);
    VSHYP_GlobalMACLearningProps stored = readProps();
    VSHYP_GlobalMACLearningProps props = stored;
    if (arguments.given("--first")) props.first = first;
    if (arguments.given("--second")) props.second = static_cast<uint16_t>(second);
    bool changed = props.first != stored.first || props.second != stored.second;
    if (changed) require(call<VSHYP_SetGlobalMACLearningProps>(&props), kHostProps);
    reportChange(out, "host", {}, changed);
}

void requireNumber(const Arguments &arguments) {
    if (!arguments.given("--first") && !arguments.given("--second"))
        fail(Exit::Usage, "at least one of --first and --second is needed");
}

// Only the kernel holds the entries; the snapshot does not have them.
std::vector<std::string> touchesTables(const Arguments &arguments) {
    return {touchedPath({arguments.text("SWITCH"), "mac"})};
}

constexpr Option kPortOption{"--port", "PORT", "of this port instead of the switch", Kind::Port};
constexpr Argument kEntry{
    .name = "ENTRY", .summary = "the entry's bytes as pairs of hexadecimal digits", .check = checkMacEntry};
constexpr Option kAtPort{"--port", "PORT", "identifier of the port", Kind::Port, false, Need::Choice};
constexpr Option kAtNumber{"--number", "N",   "the kernel's number of the port",
                           Kind::Word, false, Need::Choice};
constexpr const char *kEntryDetails =
    "An entry is the kernel's own, 86 bytes as 'qvs mac table' shows them; what is not given of it is zero. "
    "Colons between the digits are allowed, so that an entry can be the address in front of it alone.";

const Command kRows[] = {
    {.words = "mac table",
     .summary = "list the MAC addresses that a switch knows",
     .arguments = {kSwitchArgument},
     .options =
         {{"--port", "PORT", "those behind this port", Kind::Port},
          {.name = "--team", .value = nullptr, .summary = "those behind the uplinks", .excludes = "--port"},
          {.name = "--selector",
           .value = "N",
           .summary =
               "the kernel's number of a table, 8 bits (0); of the emulated host: 0 all, 1 static, 2 learnt",
           .check = checkNumber<0, UINT8_MAX>},
          {.name = "--vlan",
           .value = "N",
           .summary = "those in this VLAN",
           .excludes = "--raw",
           .check = checkNumber<0, QVS_VLAN_MAX>},
          {.name = "--mac",
           .value = "ADDRESS",
           .summary = "those with this address, or whose address begins with these bytes",
           .excludes = "--raw",
           .check = checkAddress}},
     .more = kListOptions,
     .details = "The entries are the kernel's own, 86 bytes each.",
     .example = "qvs mac table sw1 --mac 00:50:56:aa:00:10",
     .run = reads(table),
     .agrees = choosesFrom<kMacEntry>},
    {.words = "mac add",
     .summary = "add an entry to a port's MAC table",
     .arguments = {kSwitchArgument, kEntry},
     .options = {kAtPort, kAtNumber},
     .details = kEntryDetails,
     .example = "qvs mac add sw1 02:00:00:00:00:07 --port port0",
     .run = lasting(writes(addMacEntry, touchesTables))},
    {.words = "mac remove",
     .summary = "remove an entry from a port's MAC table",
     .arguments = {kSwitchArgument, kEntry},
     .options = {kAtPort, kAtNumber, kIfExists},
     .details = kEntryDetails,
     .example = "qvs mac remove sw1 02:00:00:00:00:07 --port port0",
     .run = lasting(writes(removeMacEntry, touchesTables))},
    {.words = "mac static",
     .summary = "list the static learning contexts of a switch",
     .arguments = {kSwitchArgument},
     .options = {kPortOption},
     .more = kListOptions,
     .details = "The entries are the kernel's own, 529 bytes each.",
     .example = "qvs mac static sw1",
     .run = reads(contexts),
     .agrees = choosesFrom<kStaticContext>},
    {.words = "mac security",
     .summary = "list the layer-2 security that is in force on a switch",
     .arguments = {kSwitchArgument},
     .more = kListOptions,
     .details = "The entries are the kernel's own, 8 bytes each.",
     .example = "qvs mac security sw1",
     .run = reads(security),
     .agrees = choosesFrom<kSecurityEntry>},
    {.words = "mac info",
     .summary = "show what a switch has learned",
     .arguments = {kSwitchArgument},
     .more = kRecordOptions,
     .example = "qvs mac info sw1",
     .run = reads(info)},
    {.words = "mac ports",
     .summary = "list what each port of a switch has learned",
     .arguments = {kSwitchArgument},
     .more = kListOptions,
     .example = "qvs mac ports sw1",
     .run = reads(ports),
     .agrees = choosesFrom<kPortLearning>},
    {.words = "mac stats",
     .summary = "show the learning statistics of the ports of a switch",
     .arguments = {kSwitchArgument},
     .options = {{"--port", "PORT", "of this port alone", Kind::Port}},
     .more = kListOptions,
     .example = "qvs mac stats sw1 --port port0",
     .run = reads(stats),
     .agrees = choosesFrom<kLearningStats>},
    {.words = "mac host get",
     .summary = "show the learning properties of the host, two numbers",
     .options = {kLayout},
     .details = "Those of one switch are 'qvs mac-learning'.",
     .example = "qvs mac host get",
     .run = reads(get, touchesNothing)},
    {.words = "mac host set",
     .summary = "change the learning properties of the host",
     .options = {{"--first", "N", "the first of them, 64 bits"},
                 {.name = "--second",
                  .value = "N",
                  .summary = "the second of them, 16 bits",
                  .check = checkNumber<0, UINT16_MAX>}},
     .details = "What is not given stays as it is.",
     .example = "qvs mac host set --first 300",
     .run = writes(set, touchesNothing),
     .agrees = requireNumber},
};

}  // namespace

const std::span<const Command> kMacCommands = kRows;

}  // namespace qvs::cli
