// SPDX-License-Identifier: Apache-2.0
// What is to be said of ports, links and VLANs, in words.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "access/overview.h"

namespace qvs::cli {

// "blocked", or else "free", "up" or "down".
std::string_view portState(const PortFacts &port);

// Why a port, or an uplink, has no link, as far as the facts tell: "no client is attached".
std::string linkReason(const SwitchFacts &facts, const PortFacts &port);
std::string uplinkReason(const UplinkFacts &uplink);

// Whatever is not as with most ports, its state and VLAN aside: "alias x; security: promiscuous allow".
std::string portDetails(const PortFacts &port);

// Its policies alone.
std::string policyDetails(const std::vector<Policy> &policies);

// The speed of a link: "100 Mbit/s", "2.5 Gbit/s".
std::string speedText(uint32_t mbps);

// The private VLANs by their primary: "101 isolated, 102 community".
std::map<uint32_t, std::string> privateVlanWords(const SwitchFacts &facts);

}  // namespace qvs::cli
