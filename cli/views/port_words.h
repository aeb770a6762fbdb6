// SPDX-License-Identifier: Apache-2.0
// What is to be said of a port, in words.
#pragma once

#include <string>
#include <string_view>

#include "access/overview.h"

namespace qvs::cli {

// "free", "up" or "down".
std::string_view portState(const PortFacts &port);

// Whatever is not as with most ports, its VLAN aside: "blocked; security: promiscuous allow".
std::string portDetails(const PortFacts &port);

// Its policies alone.
std::string policyDetails(const std::vector<Policy> &policies);

}  // namespace qvs::cli
