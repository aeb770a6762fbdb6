// SPDX-License-Identifier: Apache-2.0
#include "views/port_words.h"

#include <fmt/format.h>

namespace qvs::cli {
namespace {

void add(std::string &details, std::string_view text) {
    details += fmt::format("{}{}", details.empty() ? "" : "; ", text);
}

}  // namespace

std::string_view portState(const PortFacts &port) {
    if (port.blocked || port.kernelBlocked) return "blocked";
    if (!port.inUse) return "free";
    return port.linkUp ? "up" : "down";
}

std::string uplinkReason(const UplinkFacts &uplink) {
    return uplink.nic ? fmt::format("NIC {} has no link", *uplink.nic) : "no NIC is bound";
}

std::string linkReason(const SwitchFacts &facts, const PortFacts &port) {
    if (port.uplink) return uplinkReason(facts.uplinks[*port.uplink]);
    if (!port.inUse) return "no client is attached";
    if (port.blocked) return "the port is blocked";
    if (port.kernelBlocked) return "the kernel blocks the port";
    // A client that is attached to a port which is not blocked decides about the link itself.
    if (!port.client) return "the client has its link off";
    return fmt::format("the client {} has its link off", *port.client);
}

std::string policyDetails(const std::vector<Policy> &policies) {
    std::string details;
    for (const Policy &policy : policies)
        add(details, fmt::format("{}: {}", policy.name(), policy.words));
    return details;
}

std::string portDetails(const PortFacts &port) {
    std::string details;
    // The kernel blocks what is configured so.
    if (port.kernelBlocked && !port.blocked) add(details, "blocked by the kernel");
    // Uplinks and ports are made with their name as the alias.
    if (port.alias && !port.alias->empty() && *port.alias != port.id && !port.uplink)
        add(details, fmt::format("alias {}", *port.alias));
    if (port.externalId && !port.externalId->empty())
        add(details, fmt::format("external id {}", *port.externalId));
    const std::string policies = policyDetails(port.policies);
    if (!policies.empty()) add(details, policies);
    return details;
}

std::string speedText(uint32_t mbps) {
    return mbps < 1000 ? fmt::format("{} Mbit/s", mbps) : fmt::format("{:g} Gbit/s", mbps / 1000.0);
}

std::map<uint32_t, std::string> privateVlanWords(const SwitchFacts &facts) {
    std::map<uint32_t, std::string> byPrimary;
    for (const PrivateVlanFacts &vlan : facts.privateVlans) {
        std::string &line = byPrimary[vlan.primary];
        line += fmt::format("{}{} {}", line.empty() ? "" : ", ", vlan.secondary, vlan.type);
    }
    return byPrimary;
}

}  // namespace qvs::cli
