// SPDX-License-Identifier: Apache-2.0
// The settings of each family, for the table.
#pragma once

namespace qvs::config {

struct Setting;

// vlan.cpp
extern const Setting kPrivateVlans;
extern const Setting kVlan;
extern const Setting kNestedVlan;

// mac_learning.cpp
extern const Setting kMacLearning;
extern const Setting kLearnStatic;
extern const Setting kOverlayCache;
extern const Setting kStaticMacAllow;
extern const Setting kPortMacLearning;

}  // namespace qvs::config
