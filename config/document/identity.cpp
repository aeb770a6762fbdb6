// SPDX-License-Identifier: Apache-2.0
#include "config/document/identity.h"

#include <qvs/vsdvs.h>

#include <limits>

#include "config/library/limits.h"

namespace qvs::config {
namespace {

template <typename Entry, auto member>
Value get(const Entry &entry) {
    const auto &content = entry.*member;
    if (!content) return {};
    if constexpr (std::is_same_v<std::decay_t<decltype(*content)>, uint32_t>) {
        return uint64_t{*content};
    } else {
        return *content;
    }
}

template <typename Entry, auto member>
void set(Entry &entry, const Value &value) {
    using Content = std::decay_t<decltype(*(entry.*member))>;
    if constexpr (std::is_same_v<Content, uint32_t>) {
        entry.*member = static_cast<uint32_t>(value.number());
    } else if constexpr (std::is_same_v<Content, bool>) {
        entry.*member = value.on();
    } else {
        entry.*member = value.text();
    }
}

template <auto member>
constexpr IdentityMember<SwitchEntry> ofSwitch(const Member &described) {
    return {described, true, get<SwitchEntry, member>, set<SwitchEntry, member>};
}
template <auto member>
constexpr IdentityMember<PortEntry> ofPort(const Member &described) {
    return {described, false, get<PortEntry, member>, set<PortEntry, member>};
}

constexpr IdentityMember<SwitchEntry> kSwitchMembers[] = {
    ofSwitch<&SwitchEntry::id>({.name = "id",
                                .summary = "identifier of the switch",
                                .type = Type::Text,
                                .least = 1,
                                .most = kSwitchIdLimit.bytes}),
    ofSwitch<&SwitchEntry::portset>({.name = "portset",
                                     .summary = "name of the data path on this host",
                                     .type = Type::Text,
                                     .least = 1,
                                     .most = kPortsetLimit.bytes}),
    ofSwitch<&SwitchEntry::version>(
        {.name = "version", .summary = "version of the switch", .type = Type::Number}),
    ofSwitch<&SwitchEntry::opaque>(
        {.name = "opaque", .summary = "whether its ports are managed from outside", .type = Type::Boolean}),
    ofSwitch<&SwitchEntry::maxPorts>({.name = "maxPorts",
                                      .summary = "number of ports that it has room for, those of uplinks "
                                                 "among them",
                                      .type = Type::Number,
                                      .least = 1,
                                      .most = std::numeric_limits<int32_t>::max()}),
};

constexpr IdentityMember<PortEntry> kPortMembers[] = {
    ofPort<&PortEntry::connectId>(
        {.name = "connectId", .summary = "connection id of the port", .type = Type::Number}),
    ofPort<&PortEntry::externalId>({.name = "externalId",
                                    .summary = "identifier of the interface outside that the port is for",
                                    .type = Type::Text}),
    ofPort<&PortEntry::blocked>(
        {.name = "blocked", .summary = "whether the port is blocked", .type = Type::Boolean}),
};

constexpr Member kUplinkMembers[] = {
    {.name = "name",
     .summary = "name of the uplink",
     .type = Type::Text,
     .required = true,
     .least = 1,
     .most = sizeof(VSDVS_UplinkName) - 1},
    {.name = "port",
     .summary = "identifier of its port",
     .type = Type::Text,
     .required = true,
     .least = 1,
     .most = kPortIdLimit.bytes},
};

constexpr Member kPropertyMembers[] = {
    {.name = "class",
     .summary = "bits that classify the property: 8 for a policy, 16 for configuration",
     .type = Type::Number,
     .required = true},
    {.name = "value",
     .summary = "bytes of the property",
     .type = Type::Bytes,
     .required = true,
     .most = kMostValueBytes},
};

}  // namespace

std::span<const IdentityMember<SwitchEntry>> switchMembers() {
    return kSwitchMembers;
}
std::span<const IdentityMember<PortEntry>> portMembers() {
    return kPortMembers;
}

const Member kAliasMember = {
    .name = "", .summary = "alias of the switch", .type = Type::Text, .least = 1, .most = kAliasLimit.bytes};
const Member kPortIdMember = {.name = "",
                              .summary = "identifier of the port",
                              .type = Type::Text,
                              .least = 1,
                              .most = kPortIdLimit.bytes};
const Member kUplinkMember = {.name = "",
                              .summary = "uplink whose port has another name",
                              .type = Type::Record,
                              .members = kUplinkMembers};
const Member kShortUplinkMember = {.name = "",
                                   .summary = "name of an uplink and its port",
                                   .type = Type::Text,
                                   .least = 1,
                                   .most = kUplinkLimit.bytes};
const Member kPropertyKeyMember = {
    .name = "", .summary = "key of the property", .type = Type::Text, .least = 1};
const Member kPropertyMember = {.name = "",
                                .summary = "property with other class bits than usual",
                                .type = Type::Record,
                                .members = kPropertyMembers};
const Member kShortPropertyMember = {
    .name = "", .summary = "bytes of the property", .type = Type::Bytes, .most = kMostValueBytes};

Value valueOf(const std::vector<UplinkEntry> &uplinks) {
    List list;
    for (const UplinkEntry &uplink : uplinks)
        list.push_back(Members{{"name", uplink.name}, {"port", uplink.port}});
    return list;
}

Value valueOf(const RawProperty &property) {
    return Members{{"class", uint64_t{property.classes}}, {"value", property.value}};
}

}  // namespace qvs::config
