// SPDX-License-Identifier: Apache-2.0
// The document that a command names, and what it would change.
#pragma once

#include <string>
#include <string_view>
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
inline constexpr Option kStrict{
    "--strict", nullptr,
    "fail when a setting names an uplink, port or VLAN that does not exist or is removed"};

// Reads the document FILE, limited to the switches that --switch names. Throws a usage failure that lists all
// problems.
config::Document readWanted(const Arguments &arguments);
// Reads a document. Throws a usage failure that lists all problems.
config::Document checkedDocument(std::string_view text, std::string_view origin);

// How a document is compared with the host.
struct Comparison {
    bool prune = false;          // what the document does not name is to be removed
    bool keepsSwitches = false;  // but not the switches that it does not name
    bool strict = false;         // a reference to nothing is a failure, not a warning
    std::string origin;          // of the document, in messages
};
// Reads the arguments FILE, --prune, --switch and --strict.
Comparison comparisonOf(const Arguments &arguments);
// What the document would change on the host. Prints warnings.
std::vector<config::Change> compareWithHost(const config::Document &wanted, const Comparison &how);

}  // namespace qvs::cli
