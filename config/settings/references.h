// SPDX-License-Identifier: Apache-2.0
// Finds what settings refer to: uplinks and ports by their names, and private VLANs.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings/setting.h"

namespace qvs::config {

// Answers which uplinks, ports and private VLANs a switch has.
struct Existing {
    std::function<bool(std::string_view name)> uplink;
    std::function<bool(std::string_view id)> port;
    std::function<bool(uint64_t id)> privateVlan;
};

// Answers from the snapshot. Invalid after the next snapshot.
Existing existingIn(DVSSwitch *sw);

// Whether values of a setting can refer to other objects.
bool refers(const Setting &setting);

// Whether other settings can refer to what a setting lists: the map of private VLANs.
bool isReferredTo(const Setting &setting);
// The private VLANs in a map, and in the one that a switch has stored.
std::set<uint64_t> privateVlansIn(const Value &map);
std::set<uint64_t> privateVlansOf(DVSSwitch *sw);

// Returns the objects that a value refers to and that do not exist: "uplink 'uplink7'".
std::vector<std::string> missingReferences(const Setting &setting, const Value &value,
                                           const Existing &existing);

// "uplink 'uplink7' is missing"
std::string missingText(const std::vector<std::string> &missing);

// Returns the stored settings of a switch that refer to objects which do not exist: "port 'web': teaming
// policy".
std::vector<std::string> settingsThatMiss(DVSSwitch *sw, const Existing &existing);

}  // namespace qvs::config
