// SPDX-License-Identifier: Apache-2.0
// Settings of the switch or port that a call names: reading, storing, removing and reporting them.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "config/settings/families.h"
#include "config/settings/references.h"
#include "config/settings/setting.h"
#include "tool/command.h"
#include "tool/output.h"

namespace qvs::cli {

using config::Setting;
using config::Value;

// The switch, and the port given as PORT or --port, whose setting a call is about. They exist, unless the
// switch is given by identifier.
config::Target targetOf(const Setting &setting, const Arguments &arguments);
// "switch 'sw1': port 'p': teaming policy"
// The same for each port that is given. Throws for one that is given twice.
std::vector<config::Target> targetsOf(const Setting &setting, const Arguments &arguments);

std::string namedSetting(const Setting &setting, const config::Target &target);

// Returns whether one of the properties of a setting is stored.
bool isStored(const config::StoredView &stored);
// The value that is stored, or nothing. Throws when the members cannot express what is stored.
std::optional<Value> storedValue(const Setting &setting, const config::Target &target);

// Store a checked and completed value, or remove what is stored, unless nothing would change. Return whether
// something did.
bool storeSetting(const Setting &setting, const config::Target &target, const Value &value);
bool clearSetting(const Setting &setting, const config::Target &target);

// A warning, or with --strict a failure.
void warnOrFail(bool strict, const std::string &message);
// Warns about each object that a value refers to and that does not exist. Fails instead when `strict` is set.
void checkReferences(const Setting &setting, const config::Target &target, const Value &value, bool strict);
inline constexpr Option kStrict{"--strict", nullptr,
                                "fail, instead of warn, when something is missing that is referred to"};

// Does the same for the stored settings that refer to an uplink or a port which is to be removed.
void checkUsers(DVSSwitch *sw, const std::string &alias, const std::vector<std::string> &names, bool strict);
// And of those that name what a value, or nothing, in the place of the stored one no longer has.
void checkUsers(const Setting &setting, const config::Target &target, const Value &after, bool strict);

// Prints the names of the switch and the port.
void describe(Record &record, const config::Target &target);
void reportSetting(Output &out, const config::Target &target, bool changed);

// The rows' function that tells what commands about settings touch.
std::vector<std::string> touchedSettings(const Arguments &arguments,
                                         std::initializer_list<const Setting *> settings);
template <const Setting &...settings>
std::vector<std::string> touches(const Arguments &arguments) {
    return touchedSettings(arguments, {&settings...});
}

}  // namespace qvs::cli
