// SPDX-License-Identifier: Apache-2.0
// The settings of each family, for the table.
#pragma once

namespace qvs::config {

struct Setting;

// mtu.cpp
extern const Setting kMtu;

// vlan.cpp
extern const Setting kPrivateVlans;
extern const Setting kVlan;
extern const Setting kNestedVlan;

// teaming.cpp
extern const Setting kTeaming;
extern const Setting kPortTeaming;
extern const Setting kTeamingOverride;
extern const Setting kTxUplink;

// ls_teaming.cpp
extern const Setting kLsTeaming;
extern const Setting kPortLsTeaming;

// multicast.cpp
extern const Setting kMulticastMode;
extern const Setting kMulticastAddresses;
extern const Setting kPortMulticastAddresses;
extern const Setting kRcf;

// health.cpp
extern const Setting kTeamCheck;
extern const Setting kVlanMtuCheck;

// discovery.cpp
extern const Setting kDiscovery;

// mirror.cpp
extern const Setting kUplinkMirrorSessions;
extern const Setting kPortMirrorSessions;

// mac_learning.cpp
extern const Setting kMacLearning;
extern const Setting kLearnStatic;
extern const Setting kOverlayCache;
extern const Setting kStaticMacAllow;
extern const Setting kPortMacLearning;

// security.cpp
extern const Setting kSecurity;
extern const Setting kFilter;

// ipfix.cpp
extern const Setting kIpfix;

}  // namespace qvs::config
