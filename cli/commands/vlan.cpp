// SPDX-License-Identifier: Apache-2.0
// qvs pvlan, port vlan, port nested-vlan: the private VLANs of a switch, and what VLANs a port is in.
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "config/library/vlan_id.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/values.h"

namespace qvs::cli {
namespace {

constexpr Policy kPrivateVlans{"private VLANs", QVS_KEY_PRIVATE_VLAN_MAP};
constexpr Policy kVlan{"VLAN policy", QVS_KEY_PORT_VLAN};
constexpr Policy kPriority{"VLAN policy", QVS_KEY_PORT_PRIORITY};
constexpr Policy kNestedTag{"nested VLAN tagging", QVS_KEY_PORT_NESTED_TAG, sizeof(uint32_t)};

// --- private VLANs ---

// Port types count from 1.
constexpr const char *kPortTypes[] = {"promiscuous", "isolated", "community"};

std::string portTypeName(uint32_t type) {
    return type == 0 ? "0" : nameOf(kPortTypes, type - 1);
}

VSDVS_PrivateVLAN privateVlan(const std::string &text) {
    size_t first = text.find(':');
    size_t second = first == std::string::npos ? first : text.find(':', first + 1);
    if (second == std::string::npos)
        fail(Exit::Usage, "VLAN: {} is not PRIMARY:SECONDARY:TYPE", inQuotes(text));
    VSDVS_PrivateVLAN entry{};
    entry.primary = vlanId("VLAN", text.substr(0, first));
    entry.secondary = vlanId("VLAN", text.substr(first + 1, second - first - 1));
    std::string type = text.substr(second + 1);
    auto it = std::find(std::begin(kPortTypes), std::end(kPortTypes), type);
    if (it == std::end(kPortTypes))
        fail(Exit::Usage, "VLAN: {} is none of {}", inQuotes(type), fmt::join(kPortTypes, ", "));
    entry.type = static_cast<uint8_t>(it - std::begin(kPortTypes) + 1);
    return entry;
}

void getPrivateVlans(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPrivateVlans, arguments);
    void *raw = nullptr;
    uint32_t count = 0;
    place.requireRead(call<VSDVS_GetPrivateVLANMap>(place.name(), &raw, &count));
    VsdvsBuffer map(raw);
    Listing listing(out, {{"primary", "PRIMARY"}, {"secondary", "SECONDARY"}, {"type", "TYPE"}});
    for (uint32_t i = 0; i < count; i++) {
        VSDVS_PrivateVLAN entry;
        std::memcpy(&entry, static_cast<const uint8_t *>(map.get()) + i * sizeof entry, sizeof entry);
        listing.row(uint32_t{entry.primary}, uint32_t{entry.secondary},
                    std::string_view(portTypeName(entry.type)));
    }
    listing.finish();
}

void setPrivateVlans(const Arguments &arguments, Output &out) {
    std::vector<VSDVS_PrivateVLAN> map;
    for (const std::string &text : arguments.all("VLAN"))
        map.push_back(privateVlan(text));
    PolicyPlace place(kPrivateVlans, arguments);
    Bytes bytes(reinterpret_cast<const uint8_t *>(map.data()), map.size() * sizeof map[0]);
    storePolicy(out, place, place.holds(bytes), [&] {
        return call<VSDVS_SetPrivateVLANMap>(place.name(), map.data(), static_cast<uint32_t>(map.size()));
    });
}

void clearPrivateVlans(const Arguments &arguments, Output &out) {
    PolicyPlace place(kPrivateVlans, arguments);
    clearPolicy(out, place, [&] { return call<VSDVS_SetPrivateVLANMap>(place.name(), nullptr, 0); });
}

// --- a port's VLANs ---

// The stored record and the ranges behind it, whose count the library has checked.
struct VlanPolicy {
    VSDVS_PortVLAN record{};
    std::vector<VSDVS_VLANRange> ranges;
    uint32_t priority = 0;
};

VlanPolicy readVlan(const PolicyPlace &place) {
    VlanPolicy policy;
    void *raw = nullptr;
    place.requireRead(call<VSDVS_GetPortVLANPolicy>(place.name(), place.port(), &raw, &policy.priority));
    VsdvsBuffer buffer(raw);
    const auto *bytes = static_cast<const uint8_t *>(raw);
    std::memcpy(&policy.record, bytes, sizeof policy.record);
    policy.ranges.resize(policy.record.rangeCount);
    if (!policy.ranges.empty()) {
        std::memcpy(policy.ranges.data(), bytes + sizeof policy.record,
                    policy.ranges.size() * sizeof policy.ranges[0]);
    }
    return policy;
}

void getVlan(const Arguments &arguments, Output &out) {
    PolicyPlace place(kVlan, arguments);
    VlanPolicy policy = readVlan(place);
    uint32_t flags = policy.record.flags;
    std::vector<std::string> ranges;
    for (VSDVS_VLANRange range : policy.ranges)
        ranges.push_back(rangeText(range));

    Record record(out);
    place.describe(record);
    if (!out.json() && flags == 0 && policy.record.vlan == 0) {
        record.field("vlan", "VLAN", std::string_view("none"));
    } else {
        record.field("vlan", "VLAN", uint32_t{policy.record.vlan});
    }
    record.field("private", "private", Flag{(flags & VSDVS_VLAN_PRIVATE) != 0});
    record.field("trunk", "trunk", Flag{(flags & VSDVS_VLAN_TRUNK) != 0});
    if (out.json()) {
        record.field("ranges", "ranges", Words{{ranges.begin(), ranges.end()}});
    } else {
        record.field("ranges", "ranges", std::string_view(fmt::format("{}", fmt::join(ranges, ","))));
    }
    std::optional<uint32_t> priority;
    if ((flags & VSDVS_VLAN_PRIORITY) != 0) priority = policy.priority;
    record.field("priority", "priority", priority);
    record.finish();
}

std::vector<VSDVS_VLANRange> givenRanges(const Arguments &arguments) {
    constexpr size_t kMostRanges = std::numeric_limits<uint16_t>::max();
    if (!arguments.given("--trunk")) return {};
    if (arguments.text("--trunk") == "all") return {{0, QVS_VLAN_MAX}};
    std::vector<VSDVS_VLANRange> ranges;
    for (const std::string &text : splitList(arguments.text("--trunk")))
        ranges.push_back(vlanRange("--trunk", text));
    if (ranges.empty()) fail(Exit::Usage, "--trunk: names no VLAN; all of them are 'all'");
    if (ranges.size() > kMostRanges)
        fail(Exit::Usage, "--trunk: {} ranges, at most {} fit", ranges.size(), kMostRanges);
    return ranges;
}

VlanPolicy givenPolicy(const Arguments &arguments) {
    bool trunk = arguments.given("--trunk");
    if (!trunk && !arguments.given("--id") && !arguments.given("--priority"))
        fail(Exit::Usage, "at least one of --id, --trunk, --priority is needed");
    if (arguments.given("--private") && !arguments.given("--id"))
        fail(Exit::Usage, "--private says what --id is, so that is needed, too");
    VlanPolicy policy;
    if (arguments.given("--id")) policy.record.vlan = vlanId("--id", arguments.text("--id"));
    policy.ranges = givenRanges(arguments);
    policy.priority = arguments.number("--priority", VSDVS_NO_PRIORITY, 0, QVS_PRIORITY_MAX);
    bool hasPriority = arguments.given("--priority");
    policy.record.flags = static_cast<uint16_t>((trunk ? VSDVS_VLAN_TRUNK : 0u) |
                                                (arguments.given("--private") ? VSDVS_VLAN_PRIVATE : 0u) |
                                                (hasPriority ? VSDVS_VLAN_PRIORITY : 0u));
    policy.record.rangeCount = static_cast<uint16_t>(policy.ranges.size());
    return policy;
}

// Whether the record and the priority beside it are stored just so.
bool holdsVlan(const PolicyPlace &place, const PolicyPlace &priority, const VlanPolicy &policy) {
    std::vector<uint8_t> record(sizeof policy.record + policy.ranges.size() * sizeof(VSDVS_VLANRange));
    std::memcpy(record.data(), &policy.record, sizeof policy.record);
    if (!policy.ranges.empty()) {
        std::memcpy(&record[sizeof policy.record], policy.ranges.data(),
                    record.size() - sizeof policy.record);
    }
    bool hasPriority = (policy.record.flags & VSDVS_VLAN_PRIORITY) != 0;
    return place.holds(record) &&
           (hasPriority ? priority.holds(bytesOf(policy.priority)) : !priority.stored());
}

void setVlan(const Arguments &arguments, Output &out) {
    VlanPolicy policy = givenPolicy(arguments);
    PolicyPlace place(kVlan, arguments);
    bool same = holdsVlan(place, PolicyPlace(kPriority, arguments), policy);
    storePolicy(out, place, same, [&] {
        uint32_t flags = policy.record.flags;
        return call<VSDVS_SetPortVLANPolicy>(
            place.name(), place.port(), policy.record.vlan, policy.priority, flags & VSDVS_VLAN_TRUNK ? 1 : 0,
            flags & VSDVS_VLAN_PRIVATE ? 1 : 0, policy.ranges.data(), policy.record.rangeCount);
    });
}

// A port that was cleared has an empty policy. One that never had any is left alone.
void clearVlan(const Arguments &arguments, Output &out) {
    PolicyPlace place(kVlan, arguments);
    PolicyPlace priority(kPriority, arguments);
    bool none = (!place.stored() && !priority.stored()) || holdsVlan(place, priority, {});
    storePolicy(out, place, none,
                [&] { return call<VSDVS_ClearPortVLANPolicy>(place.name(), place.port()); });
}

// --- nested tagging ---

void getNestedTagging(const Arguments &arguments, Output &out) {
    PolicyPlace place(kNestedTag, arguments);
    uint8_t enabled = 0;
    place.requireRead(call<VSDVS_GetPortNestedVLANTagging>(place.name(), place.port(), &enabled));
    printValue(out, place, "enabled", Flag{enabled != 0, "on", "off"});
}

void setNestedTagging(const Arguments &arguments, Output &out) {
    uint32_t on = chosen(arguments, "STATE", kOffOn);
    PolicyPlace place(kNestedTag, arguments);
    storePolicy(out, place, place.holds(bytesOf(on)), [&] {
        return call<VSDVS_SetPortNestedVLANTagging>(place.name(), place.port(), static_cast<uint8_t>(on));
    });
}

const Command kPrivateVlanRows[] = {
    {.words = "pvlan get",
     .summary = "list the private VLANs of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs pvlan get sw1",
     .run = reads(getPrivateVlans, touches<kPrivateVlans>)},
    {.words = "pvlan set",
     .summary = "store the private VLANs of a switch in place of those it has",
     .arguments = {kSwitchArgument,
                   {"VLAN", "PRIMARY:SECONDARY:TYPE; ids 0 to 4094; promiscuous, isolated or community",
                    Kind::Word, false, true}},
     .example = "qvs pvlan set sw1 100:100:promiscuous 100:101:isolated",
     .run = writes(setPrivateVlans, touches<kPrivateVlans>)},
    {.words = "pvlan clear",
     .summary = "remove the private VLANs of a switch",
     .arguments = {kSwitchArgument},
     .example = "qvs pvlan clear sw1",
     .run = writes(clearPrivateVlans, touches<kPrivateVlans>)},
};

const Command kPortRows[] = {
    {.words = "port vlan get",
     .summary = "show the VLAN policy of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port vlan get sw1 port0",
     .run = reads(getVlan, touches<kVlan, kPriority>)},
    {.words = "port vlan set",
     .summary = "store the VLAN policy of a port in place of the one it has",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{"--id", "VLAN", "the port's VLAN, 0 to 4094 (0)"},
                 {"--private", nullptr, "--id is that of a private VLAN"},
                 {"--trunk", "LIST", "VLANs that the guest tags itself: 1-100,200 or all"},
                 {"--priority", "N", "priority tag, 0 to 7"}},
     .details = "What is not given is not part of the policy, whatever it was before.",
     .example = "qvs port vlan set sw1 port0 --trunk 1-100,200",
     .run = writes(setVlan, touches<kVlan, kPriority>)},
    {.words = "port vlan clear",
     .summary = "make the VLAN policy of a port an empty one",
     .arguments = {kSwitchArgument, kPortArgument},
     .details = "The record stays, without VLANs. A port without a record is left alone.",
     .example = "qvs port vlan clear sw1 port0",
     .run = writes(clearVlan, touches<kVlan, kPriority>)},
    {.words = "port nested-vlan get",
     .summary = "print whether nested VLAN tagging is on",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port nested-vlan get sw1 port0",
     .run = reads(getNestedTagging, touches<kNestedTag>)},
    {.words = "port nested-vlan set",
     .summary = "switch nested VLAN tagging on or off",
     .arguments = {kSwitchArgument, kPortArgument, {"STATE", "on or off"}},
     .example = "qvs port nested-vlan set sw1 port0 on",
     .run = writes(setNestedTagging, touches<kNestedTag>)},
};

}  // namespace

const std::span<const Command> kPrivateVlanCommands = kPrivateVlanRows;
const std::span<const Command> kPortVlanCommands = kPortRows;

}  // namespace qvs::cli
