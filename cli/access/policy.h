// SPDX-License-Identifier: Apache-2.0
// Settings as people read them in lists: what differs from the default, in a few words.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/settings/setting.h"

namespace qvs::cli {

// A setting that differs from its default.
struct Policy {
    const config::Setting *setting = nullptr;
    std::optional<config::Value> value;  // nothing when its members cannot express what is stored
    std::string words;                   // the members that differ: "promiscuous allow, forged deny"

    // "security" for the setting of "port security": lists say elsewhere that they are about ports.
    std::string_view name() const;
};

// What is stored for a setting; nothing when that is the default.
std::optional<Policy> policyOf(const config::Setting &setting, const config::StoredView &stored);

// The members of a completed value that differ from their defaults, in words; empty when none does.
std::string policyWords(const config::Setting &setting, const config::Value &value);
// All its members in words.
std::string allWords(const config::Setting &setting, const config::Value &value);
// A VLAN policy in words: "100", "trunk 1-100", "private 101"; empty when it names no VLAN.
std::string vlanWords(const config::Value &vlan);
// Whether a VLAN policy lets this VLAN through: as its id, or in its trunk.
bool carriesVlan(const config::Value &vlan, uint32_t id);

}  // namespace qvs::cli
