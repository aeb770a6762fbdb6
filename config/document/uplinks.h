// SPDX-License-Identifier: Apache-2.0
// Reads the two stored lists that make up the uplinks of a switch.
#pragma once

#include <optional>
#include <vector>

#include "config/document/document.h"

namespace qvs::config {

// Returns the uplinks of a switch in the order of their ports. Returns nothing when the lists disagree with
// each other or with the ports; a document then contains the lists as properties.
std::optional<std::vector<UplinkEntry>> uplinksOf(DVSSwitch *sw);

}  // namespace qvs::config
