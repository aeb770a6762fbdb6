// SPDX-License-Identifier: Apache-2.0
// The emulated check of VLANs and MTU. The network behind the uplinks carries every VLAN and the MTU of the
// NICs, so the results depend only on the links of the uplinks.
#include "daemon/model/health_check.h"

#include <algorithm>
#include <vector>

#include "daemon/model/bytes.h"

namespace qvs::kernel {

namespace {

struct Range {
    uint16_t first;
    uint16_t last;
};
using Ranges = std::vector<Range>;

// Returns the VLANs that a policy names. Its layout is: u16 flags (1: trunk), u16 id, 2 bytes, u16 number of
// ranges, the ranges.
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
    constexpr size_t kDeployment = 5;  // u8 enabled, u32 minutes
    const Property *deployment = sw.global.find(kCheckDeployKey);
    deployed_ = sw.portset != nullptr && deployment != nullptr && deployment->value.size() == kDeployment &&
                deployment->value[0] != 0;
    if (!deployed_) return;
    for (const Nic *nic : inventory.boundNics(sw)) {
        if (nic->up()) mtu_ = mtu_ == 0 ? nic->mtu : std::min(mtu_, nic->mtu);
    }
}

std::optional<HealthCheck::Results> HealthCheck::resultsOf(const Port &port) const {
    const Property *policy = deployed_ ? port.properties.find(kPortVlanKey) : nullptr;
    const Ranges vlans = policy == nullptr ? Ranges{} : vlansOf(policy->value);
    if (vlans.empty()) return std::nullopt;
    return Results{mtu_ != 0 ? packResult(vlans, {}) : packResult({}, vlans), packMtus(mtu_)};
}

std::optional<std::string> checkResult(const Inventory &inventory, const Port &port, std::string_view key) {
    if (key != kVlanResultKey && key != kMtuResultKey) return std::nullopt;
    const auto results = HealthCheck(inventory, *port.owner).resultsOf(port);
    if (!results) return std::nullopt;
    return key == kVlanResultKey ? results->vlan : results->mtu;
}

}  // namespace qvs::kernel
