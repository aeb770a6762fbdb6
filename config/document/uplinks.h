// SPDX-License-Identifier: Apache-2.0
// The two stored lists that make up the uplinks of a switch.
#pragma once

#include <optional>
#include <vector>

#include "config/document/document.h"

namespace qvs::config {

// The uplinks that the lists of a switch name, in the order of their ports. Nothing when the lists do not
// agree with each other or with the ports, so that no list of uplinks stands for them.
std::optional<std::vector<UplinkEntry>> uplinksOf(DVSSwitch *sw);

}  // namespace qvs::config
