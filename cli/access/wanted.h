// SPDX-License-Identifier: Apache-2.0
// The document that a command names, and what it would change.
#pragma once

#include <vector>

#include "config/document/diff.h"
#include "config/document/document.h"
#include "tool/command.h"

namespace qvs::cli {

inline constexpr Option kOnlySwitch{.name = "--switch",
                                    .value = "SWITCH",
                                    .summary = "this switch of the document alone",
                                    .kind = Kind::Switch,
                                    .repeated = true};
inline constexpr Option kStrict{"--strict", nullptr,
                                "fail when a setting names an uplink, port or VLAN that does not exist"};

// What FILE holds, of the switches that --switch names or of all. Throws a usage failure that lists all that
// is wrong with it.
config::Document readWanted(const Arguments &arguments);
// Compares it with the host as --prune and --switch say. Warns, or throws with --strict.
std::vector<config::Change> compareWithHost(const config::Document &wanted, const Arguments &arguments);

}  // namespace qvs::cli
