// SPDX-License-Identifier: Apache-2.0
// What settings refer to: uplinks and ports by their names, and private VLANs.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings/setting.h"

namespace qvs::config {

// Tells what a switch has.
struct Existing {
    std::function<bool(std::string_view name)> uplink;
    std::function<bool(std::string_view id)> port;
    std::function<bool(uint64_t id)> privateVlan;
};

// What the snapshot has of a switch. Ends with the snapshot.
Existing existingIn(DVSSwitch *sw);

// Whether values of a setting can refer to something.
bool refers(const Setting &setting);

// What a value refers to that does not exist, one text each: "uplink 'uplink7'".
std::vector<std::string> missingReferences(const Setting &setting, const Value &value,
                                           const Existing &existing);

// The stored settings of a switch that refer to something that does not exist, in words: "port 'web':
// teaming policy".
std::vector<std::string> settingsThatMiss(DVSSwitch *sw, const Existing &existing);

}  // namespace qvs::config
