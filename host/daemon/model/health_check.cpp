// SPDX-License-Identifier: Apache-2.0
// The check of VLANs and MTU. The data path finds the results of uplinks with an attachment. The network
// behind other uplinks carries every VLAN and the MTU of the NIC.
#include "daemon/model/health_check.h"

#include <algorithm>
#include <vector>

#include "daemon/model/bytes.h"

namespace qvs::kernel {

namespace {

using Range = VlanSpan;
using Ranges = std::vector<Range>;

constexpr size_t kFoundVlans = 512;  // bytes, in front of the MTU

bool isFound(std::string_view checked) {
    return checked.size() == kFoundVlans + sizeof(uint16_t);
}

}  // namespace

// The layout of a policy is: u16 flags (1: trunk), u16 id, 2 bytes, u16 number of ranges, the ranges.
Ranges vlansOf(std::string_view policy) {
    constexpr size_t kHead = 8;
    constexpr uint16_t kTrunk = 1;
    const uint32_t flagsAndId = u32At(policy, 0);
    const size_t count = u32At(policy, 4) >> 16;
    if (policy.size() != kHead + count * sizeof(Range)) return {};
    const auto id = static_cast<uint16_t>(flagsAndId >> 16);
    if ((flagsAndId & kTrunk) == 0) return id == 0 ? Ranges{} : Ranges{{id, id}};
    Ranges ranges;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t range = u32At(policy, kHead + i * sizeof(Range));
        ranges.push_back({static_cast<uint16_t>(range), static_cast<uint16_t>(range >> 16)});
    }
    return ranges;
}

bool isDeployed(std::string_view deployment) {
    constexpr size_t kSize = 5;  // u8 enabled, u32 minutes
    return deployment.size() == kSize && deployment[0] != 0;
}

namespace {

// Adds each VLAN of the ranges to those that all uplinks carry, or to the others.
void divide(const Ranges &ranges, const std::vector<std::string_view> &found, Ranges *good, Ranges *bad) {
    for (const Range &range : ranges) {
        Ranges *last = nullptr;
        for (uint32_t vlan = range.first; vlan <= range.last; ++vlan) {
            const bool carried = std::all_of(found.begin(), found.end(), [&](std::string_view each) {
                return vlan < kFoundVlans * 8 && (u8At(each, vlan / 8) >> vlan % 8 & 1) != 0;
            });
            Ranges *const list = carried ? good : bad;
            if (list != last) list->push_back({static_cast<uint16_t>(vlan), 0});
            list->back().last = static_cast<uint16_t>(vlan);
            last = list;
        }
    }
}

// Builds a result: u16 number of good ranges, u16 number of bad ranges, the good ranges, the bad ranges.
std::string packResult(const Ranges &good, const Ranges &bad) {
    Record record((1 + good.size() + bad.size()) * sizeof(Range));
    record.put(0, static_cast<uint16_t>(good.size())).put(2, static_cast<uint16_t>(bad.size()));
    size_t at = sizeof(Range);
    for (const Ranges *ranges : {&good, &bad}) {
        for (const Range &range : *ranges) {
            record.put(at, range);
            at += sizeof range;
        }
    }
    return record.take();
}

std::string packMtus(uint32_t most) {
    constexpr uint16_t kLeast = kMinMtu;
    constexpr uint16_t kMost = kMaxMtu;
    const auto good = static_cast<uint16_t>(most);
    if (good == 0) return packResult({}, {{kLeast, kMost}});
    if (good == kMost) return packResult({{kLeast, kMost}}, {});
    return packResult({{kLeast, good}}, {{static_cast<uint16_t>(good + 1), kMost}});
}

}  // namespace

HealthCheck::HealthCheck(const Inventory &inventory, const Switch &sw) {
    const Property *deployment = sw.global.find(kCheckDeployKey);
    deployed_ = sw.portset != nullptr && deployment != nullptr && isDeployed(deployment->value);
    if (!deployed_) return;
    bool first = true;
    for (const Nic *nic : inventory.boundNics(sw)) {
        if (!nic->up()) continue;
        const std::string_view checked = nic->port->checked;
        if (isFound(checked)) found_.push_back(checked);
        waits_ = waits_ || (!checked.empty() && !isFound(checked));
        const uint32_t mtu = isFound(checked) ? u16At(checked, kFoundVlans) : nic->mtu;
        mtu_ = first ? mtu : std::min(mtu_, mtu);
        first = false;
        ++links_;
    }
}

std::optional<HealthCheck::Results> HealthCheck::resultsOf(const Port &port) const {
    const Property *policy = deployed_ ? port.properties.find(kPortVlanKey) : nullptr;
    const Ranges vlans = policy == nullptr ? Ranges{} : vlansOf(policy->value);
    if (vlans.empty()) return std::nullopt;
    Ranges good;
    Ranges bad;
    if (port.nic != nullptr && !port.checked.empty()) {
        // An uplink has its own results.
        if (!isFound(port.checked)) return std::nullopt;
        divide(vlans, {port.checked}, &good, &bad);
        return Results{packResult(good, bad), packMtus(u16At(port.checked, kFoundVlans))};
    }
    if (waits_) return std::nullopt;
    if (links_ == 0) return Results{packResult({}, vlans), packMtus(0)};
    divide(vlans, found_, &good, &bad);
    return Results{packResult(found_.empty() ? vlans : good, bad), packMtus(mtu_)};
}

std::optional<std::string> checkResult(const Inventory &inventory, const Port &port, std::string_view key) {
    if (key != kVlanResultKey && key != kMtuResultKey) return std::nullopt;
    const auto results = HealthCheck(inventory, *port.owner).resultsOf(port);
    if (!results) return std::nullopt;
    return key == kVlanResultKey ? results->vlan : results->mtu;
}

}  // namespace qvs::kernel
