// SPDX-License-Identifier: Apache-2.0
// Compiles the protocols by which a switch speaks with the network behind its uplinks.
#include <filesystem>

#include "daemon/devices/device_request.h"
#include "daemon/model/health_check.h"
#include "daemon/network/compile.h"

namespace qvs::kernel {

namespace {

std::unique_ptr<policy::CheckT> compileCheck(const Switch &sw) {
    const Property *deployment = sw.global.find(kCheckDeployKey);
    if (deployment == nullptr || !isDeployed(deployment->value)) return nullptr;
    auto check = std::make_unique<policy::CheckT>();
    check->minutes = u32At(deployment->value, 1);
    std::vector<bool> wanted(kMaxVlan + 1);
    for (const auto &[number, port] : sw.ports) {
        const Property *policy = port->properties.find(kPortVlanKey);
        if (policy == nullptr) continue;
        for (const VlanSpan &span : vlansOf(policy->value))
            for (uint32_t vlan = span.first; vlan <= std::min(span.last, kMaxVlan); ++vlan)
                wanted[vlan] = true;
    }
    for (uint16_t vlan = 0; vlan <= kMaxVlan; ++vlan) {
        if (!wanted[vlan]) continue;
        const uint16_t first = vlan;
        while (vlan < kMaxVlan && wanted[vlan + 1])
            ++vlan;
        check->vlans.emplace_back(first, vlan);
    }
    return check;
}

// The record: u8 protocol (1: LLDP), u8 operation (bit 0: listen, bit 1: advertise).
std::unique_ptr<policy::DiscoveryT> compileDiscovery(const Switch &sw) {
    constexpr uint8_t kLldp = 1;
    constexpr uint8_t kBoth = 3;
    const Property *stored = sw.global.find("com.quillon.etherswitch.cdp");
    if (stored == nullptr || stored->value.size() != 2 || u8At(stored->value, 0) != kLldp ||
        u8At(stored->value, 1) > kBoth)
        return nullptr;
    auto discovery = std::make_unique<policy::DiscoveryT>();
    discovery->listen = (u8At(stored->value, 1) & 1) != 0;
    discovery->advertise = (u8At(stored->value, 1) & 2) != 0;
    return discovery;
}

}  // namespace

void compileControl(const Switch &sw, const std::string &directory, policy::SwitchT *compiled) {
    compiled->check = compileCheck(sw);
    compiled->discovery = compileDiscovery(sw);
    if (compiled->check == nullptr && compiled->discovery == nullptr) return;
    compiled->systemName = std::filesystem::path(directory).filename().string();
}

}  // namespace qvs::kernel
