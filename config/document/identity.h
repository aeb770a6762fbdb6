// SPDX-License-Identifier: Apache-2.0
// The members of switches and ports in documents that are not settings. Reader, writer, schema and comparison
// are made from these tables.
#pragma once

#include <span>

#include "config/document/document.h"

namespace qvs::config {

template <typename Entry>
struct IdentityMember {
    Member member;
    bool fixed;                                // an existing object cannot change it
    Value (*get)(const Entry &);               // absent when the entry has none
    void (*set)(Entry &, const Value &value);  // a checked value
};

std::span<const IdentityMember<SwitchEntry>> switchMembers();
std::span<const IdentityMember<PortEntry>> portMembers();

// Names in documents. `shortUplink` is an uplink that has the name of its port.
extern const Member kAliasMember;
extern const Member kPortIdMember;
extern const Member kUplinkMember;       // {name, port}
extern const Member kShortUplinkMember;  // "uplink0"
extern const Member kPropertyKeyMember;
extern const Member kPropertyMember;       // {class, value}
extern const Member kShortPropertyMember;  // base64

// The names of the mappings in an entry.
inline constexpr const char *kSwitches = "switches";
inline constexpr const char *kUplinks = "uplinks";
inline constexpr const char *kProperties = "properties";
inline constexpr const char *kHost = "host";
inline constexpr const char *kPorts = "ports";

// Convert the uplinks of an entry to a list of {name, port}, and back.
Value valueOf(const std::vector<UplinkEntry> &uplinks);
Value valueOf(const RawProperty &property);

}  // namespace qvs::config
