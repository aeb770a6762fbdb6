// SPDX-License-Identifier: Apache-2.0
// Private VLANs of a switch, and the VLANs of a port.
#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

// --- private VLANs ---

// Port types count from 1.
constexpr const char *kPortTypes[] = {"promiscuous", "isolated", "community"};
constexpr Member kPrivateVlanMembers[] = {
    {.name = "primary",
     .summary = "primary VLAN",
     .type = Type::Number,
     .required = true,
     .most = QVS_VLAN_MAX},
    {.name = "secondary",
     .summary = "secondary VLAN",
     .type = Type::Number,
     .required = true,
     .most = QVS_VLAN_MAX},
    {.name = "type",
     .summary = "type of its ports",
     .type = Type::Word,
     .required = true,
     .words = kPortTypes},
};
constexpr Member kPrivateVlanMap[] = {{.name = "",
                                       .summary = "private VLANs",
                                       .type = Type::Record,
                                       .list = true,
                                       .members = kPrivateVlanMembers}};

std::optional<Value> decodePrivateVlans(const StoredView &stored) {
    if (!stored[0] || stored[0]->empty() || stored[0]->size() % sizeof(VSDVS_PrivateVLAN) != 0)
        return std::nullopt;
    List map;
    for (size_t at = 0; at < stored[0]->size(); at += sizeof(VSDVS_PrivateVLAN)) {
        const auto entry = *recordOf<VSDVS_PrivateVLAN>(stored[0]->subspan(at, sizeof(VSDVS_PrivateVLAN)));
        if (entry.primary > QVS_VLAN_MAX || entry.secondary > QVS_VLAN_MAX || entry.type < 1 ||
            entry.type > std::size(kPortTypes))
            return std::nullopt;
        map.push_back(Members{{"primary", uint64_t{entry.primary}},
                              {"secondary", uint64_t{entry.secondary}},
                              {"type", kPortTypes[entry.type - 1]}});
    }
    return map;
}

Stored encodePrivateVlans(const Value &value, const StoredView &, const Target &) {
    Blob map;
    for (const Value &item : value.list()) {
        VSDVS_PrivateVLAN entry{};
        entry.primary = static_cast<uint16_t>(item["primary"].number());
        entry.secondary = static_cast<uint16_t>(item["secondary"].number());
        const auto *type = std::find(std::begin(kPortTypes), std::end(kPortTypes), item["type"].text());
        entry.type = static_cast<uint8_t>(type - std::begin(kPortTypes) + 1);
        const Blob bytes = blobOf(entry);
        map.insert(map.end(), bytes.begin(), bytes.end());
    }
    // libqvs clears a map without entries.
    if (map.empty()) return {};
    return {std::move(map)};
}

std::optional<Value> readPrivateVlans(const Target &target) {
    void *raw = nullptr;
    uint32_t count = 0;
    if (!wasRead(kPrivateVlans, target, call<VSDVS_GetPrivateVLANMap>(target.alias.c_str(), &raw, &count)))
        return std::nullopt;
    const VsdvsBuffer map(raw);
    if (count == 0) return List{};
    return decodePrivateVlans({Bytes(static_cast<const uint8_t *>(raw), count * sizeof(VSDVS_PrivateVLAN))});
}

HYP_ReturnStatus storePrivateVlans(const Target &target, const Stored &records) {
    const char *alias = target.alias.c_str();
    if (!records[0]) return unlessAbsent(call<VSDVS_SetPrivateVLANMap>(alias, nullptr, 0));
    const auto count = static_cast<uint32_t>(records[0]->size() / sizeof(VSDVS_PrivateVLAN));
    return call<VSDVS_SetPrivateVLANMap>(alias, records[0]->data(), count);
}

HYP_ReturnStatus clearPrivateVlans(const Target &target) {
    return storePrivateVlans(target, {});
}

// --- a port's VLANs: a record with ranges behind it, and the priority in a property of its own ---

constexpr Member kVlanMembers[] = {
    {.name = "id",
     .summary = "VLAN of the port; 0 for none",
     .type = Type::Number,
     .most = QVS_VLAN_MAX,
     .fallback = "0",
     .quiet = true},
    {.name = "private",
     .summary = "whether the id is that of a private VLAN",
     .type = Type::Boolean,
     .fallback = "off",
     .quiet = true},
    {.name = "trunk",
     .summary = "VLANs that the guest tags itself",
     .type = Type::Vlans,
     .list = true,
     .mostItems = std::numeric_limits<uint16_t>::max()},
    {.name = "priority", .summary = "priority of the tag", .type = Type::Number, .most = QVS_PRIORITY_MAX},
};

std::string rangeText(const VSDVS_VLANRange &range) {
    if (range.first == range.last) return fmt::to_string(uint32_t{range.first});
    return fmt::format("{}-{}", uint32_t{range.first}, uint32_t{range.last});
}

// The record and its ranges; the caller has checked that they are there.
std::optional<Value> vlanValue(Bytes bytes, std::optional<uint32_t> priority) {
    const auto record = *recordOf<VSDVS_PortVLAN>(bytes.first(sizeof(VSDVS_PortVLAN)));
    const uint32_t flags = record.flags;
    Value value = Members{{"id", uint64_t{record.vlan}}, {"private", (flags & VSDVS_VLAN_PRIVATE) != 0}};
    List trunk;
    for (uint32_t i = 0; i < record.rangeCount; i++) {
        const size_t at = sizeof record + i * sizeof(VSDVS_VLANRange);
        const auto range = *recordOf<VSDVS_VLANRange>(bytes.subspan(at, sizeof(VSDVS_VLANRange)));
        if (range.first > range.last || range.last > QVS_VLAN_MAX) return std::nullopt;
        trunk.push_back(rangeText(range));
    }
    if ((flags & VSDVS_VLAN_TRUNK) != 0) value.set("trunk", std::move(trunk));
    if ((flags & VSDVS_VLAN_PRIORITY) != 0 && priority) value.set("priority", uint64_t{*priority});
    return value;
}

std::optional<Value> decodeVlan(const StoredView &stored) {
    const std::optional<Bytes> &bytes = stored[0];
    if (!bytes || bytes->size() < sizeof(VSDVS_PortVLAN)) return std::nullopt;
    const auto record = *recordOf<VSDVS_PortVLAN>(bytes->first(sizeof(VSDVS_PortVLAN)));
    if (bytes->size() != sizeof record + record.rangeCount * sizeof(VSDVS_VLANRange)) return std::nullopt;
    if (record.vlan > QVS_VLAN_MAX) return std::nullopt;
    // libqvs cannot store such a trunk.
    if ((record.flags & VSDVS_VLAN_TRUNK) != 0 && record.rangeCount == 0) return std::nullopt;
    const auto priority = recordOf<uint32_t>(stored[1]);
    if (priority > QVS_PRIORITY_MAX) return std::nullopt;
    std::optional<Value> value = vlanValue(*bytes, priority);
    return value ? ifTaken(kVlan, std::move(*value)) : value;
}

// libqvs stores a trunk without ranges as one of all VLANs.
Value canonicalVlan(Value value) {
    const Value &trunk = value["trunk"];
    if (!trunk.absent() && trunk.list().empty()) value.set("trunk", List{fmt::format("0-{}", QVS_VLAN_MAX)});
    return value;
}

std::string problemOfVlan(const Value &value) {
    if (value["private"].on() && value["id"].number() == 0) return "private requires id";
    return {};
}

VSDVS_VLANRange rangeOf(const std::string &text) {
    const size_t dash = text.find('-');
    const auto first = static_cast<uint16_t>(*parseNumber(text.substr(0, dash)));
    const auto last =
        dash == std::string::npos ? first : static_cast<uint16_t>(*parseNumber(text.substr(dash + 1)));
    return {first, last};
}

Stored encodeVlan(const Value &value, const StoredView &, const Target &) {
    VSDVS_PortVLAN record{};
    const Value &trunk = value["trunk"];
    const Value &priority = value["priority"];
    record.vlan = static_cast<uint16_t>(value["id"].number());
    record.flags = static_cast<uint16_t>((value["private"].on() ? VSDVS_VLAN_PRIVATE : 0u) |
                                         (trunk.absent() ? 0u : VSDVS_VLAN_TRUNK) |
                                         (priority.absent() ? 0u : VSDVS_VLAN_PRIORITY));
    if (!trunk.absent()) record.rangeCount = static_cast<uint16_t>(trunk.list().size());
    Blob bytes = blobOf(record);
    for (uint32_t i = 0; i < record.rangeCount; i++) {
        const Blob range = blobOf(rangeOf(trunk.list()[i].text()));
        bytes.insert(bytes.end(), range.begin(), range.end());
    }
    Stored stored = {std::move(bytes)};
    if (!priority.absent()) stored[1] = blobOf(static_cast<uint32_t>(priority.number()));
    return stored;
}

std::optional<Value> readVlan(const Target &target) {
    void *raw = nullptr;
    uint32_t priority = 0;
    if (!wasRead(kVlan, target,
                 call<VSDVS_GetPortVLANPolicy>(target.alias.c_str(), target.port.c_str(), &raw, &priority)))
        return std::nullopt;
    const VsdvsBuffer buffer(raw);
    VSDVS_PortVLAN record;
    std::memcpy(&record, raw, sizeof record);
    const size_t size = sizeof record + record.rangeCount * sizeof(VSDVS_VLANRange);
    return vlanValue({static_cast<const uint8_t *>(raw), size}, priority);
}

HYP_ReturnStatus storeVlan(const Target &target, const Stored &records) {
    VSDVS_PortVLAN record;
    std::memcpy(&record, records[0]->data(), sizeof record);
    const uint32_t flags = record.flags;
    const uint32_t priority = recordOf<uint32_t>(viewOf(records)[1]).value_or(VSDVS_NO_PRIORITY);
    const uint8_t *ranges = records[0]->data() + sizeof record;
    return call<VSDVS_SetPortVLANPolicy>(
        target.alias.c_str(), target.port.c_str(), record.vlan, priority,
        (flags & VSDVS_VLAN_TRUNK) != 0 ? 1 : 0, (flags & VSDVS_VLAN_PRIVATE) != 0 ? 1 : 0,
        reinterpret_cast<const VSDVS_VLANRange *>(ranges), record.rangeCount);
}

// --- nested tagging ---

constexpr Member kNestedMembers[] = {{.name = "",
                                      .summary = "whether nested VLAN tagging is enabled",
                                      .type = Type::Boolean,
                                      .fallback = "off"}};

std::optional<Value> decodeNested(const StoredView &stored) {
    const auto number = recordOf<uint32_t>(stored[0]);
    if (!number || *number > 1) return std::nullopt;
    return *number == 1;
}

Stored encodeNested(const Value &value, const StoredView &, const Target &) {
    return {blobOf(uint32_t{value.on() ? 1u : 0u})};
}

std::optional<Value> readNested(const Target &target) {
    uint8_t enabled = 0;
    if (!wasRead(kNestedVlan, target,
                 call<VSDVS_GetPortNestedVLANTagging>(target.alias.c_str(), target.port.c_str(), &enabled)))
        return std::nullopt;
    return enabled != 0;
}

HYP_ReturnStatus storeNested(const Target &target, const Stored &records) {
    return call<VSDVS_SetPortNestedVLANTagging>(target.alias.c_str(), target.port.c_str(),
                                                records[0]->front());
}

}  // namespace

const Setting kPrivateVlans = {
    .name = "privateVlans",
    .noun = "pvlan",
    .what = "private VLANs",
    .summary = "the private VLANs of a switch",
    .scope = Scope::Global,
    .keys = {QVS_KEY_PRIVATE_VLAN_MAP},
    .members = kPrivateVlanMap,
    .example = "100:100:promiscuous 100:101:isolated",
    .content = "privateVlans",
    .decode = decodePrivateVlans,
    .encode = encodePrivateVlans,
    .read = readPrivateVlans,
    .store = storePrivateVlans,
    .clear = clearPrivateVlans,
};

const Setting kVlan = {
    .name = "vlan",
    .noun = "port vlan",
    .what = "VLAN policy",
    .summary = "the VLANs of a port",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_VLAN, QVS_KEY_PORT_PRIORITY},
    .members = kVlanMembers,
    .example = "--trunk 1-100,200",
    .details =
        "A trunk without ranges is one of all VLANs. clear stores a policy without VLANs when the port has a "
        "policy, and changes nothing otherwise.",
    .canonical = canonicalVlan,
    .problem = problemOfVlan,
    .decode = decodeVlan,
    .encode = encodeVlan,
    .read = readVlan,
    .store = storeVlan,
    .clear = clearPort<VSDVS_ClearPortVLANPolicy>,
    .clearStores = true,
};

const Setting kNestedVlan = {
    .name = "nestedVlan",
    .noun = "port nested-vlan",
    .what = "nested VLAN tagging",
    .summary = "whether a port may nest VLAN tags",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_NESTED_TAG},
    .members = kNestedMembers,
    .example = "on",
    .details = "The default is off.",
    .decode = decodeNested,
    .encode = encodeNested,
    .read = readNested,
    .store = storeNested,
    .clear = clearKey<kNestedVlan>,
};

}  // namespace qvs::config
