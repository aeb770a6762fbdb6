// SPDX-License-Identifier: Apache-2.0
// What is connected to what, as people read it: ports that are alike belong together.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "access/overview.h"
#include "tool/output.h"

namespace qvs::cli {

// Ports of one VLAN with policies of the same names, without those of uplinks.
struct PortGroup {
    std::string title;     // "VLAN 100", "No VLAN"
    std::string policies;  // their names
    std::vector<const PortFacts *> ports;
};
// In the order of their titles.
std::vector<PortGroup> groupsOf(const SwitchFacts &facts);

// The names of policies, in order: "security, teaming".
std::string policyNames(const std::vector<Policy> &policies);

// The switches in the language of Graphviz.
std::string dotText(const std::vector<SwitchFacts> &switches);
// The picture that Graphviz makes of it. Throws when Graphviz is not installed or fails.
void writeSvg(Output &out, const std::string &dot);

// The page that shows the switches, made of cli/page/topology.html. It holds the place of the data once.
extern const std::string_view kTopologyPage;

}  // namespace qvs::cli
