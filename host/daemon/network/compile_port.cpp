// SPDX-License-Identifier: Apache-2.0
// Compiles the policies of a port: VLAN, security, receive filter, learning.
#include "daemon/devices/attachments.h"
#include "daemon/devices/device_request.h"
#include "daemon/devices/mac_table.h"
#include "daemon/model/text.h"
#include "daemon/network/compile.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kMacSize = 6;

// The record of a VLAN policy: u16 flags, u16 VLAN, u16 unused, u16 ranges; the ranges: u16 first, u16 last.
constexpr size_t kVlanHead = 8;
constexpr size_t kVlanRange = 4;
constexpr uint16_t kTrunk = 1;
constexpr uint16_t kPrivate = 2;
constexpr uint16_t kHasPriority = 4;

void addRanges(std::string_view record, policy::VlanT *vlan) {
    for (size_t at = kVlanHead; at < record.size(); at += kVlanRange) {
        const uint16_t first = u16At(record, at);
        const uint16_t last = std::min(u16At(record, at + 2), kMaxVlan);
        if (first <= last) vlan->ranges.emplace_back(first, last);
    }
}

int32_t priorityOf(const Port &port) {
    constexpr uint32_t kHighest = 7;
    const Property *stored = port.properties.find("com.quillon.vswitch.port.priority");
    const uint32_t priority =
        stored == nullptr || stored->value.size() != sizeof(uint32_t) ? 0 : u32At(stored->value, 0);
    return priority > kHighest ? -1 : static_cast<int32_t>(priority);
}

}  // namespace

// A port with a malformed record carries no VLAN: it is a trunk without ranges.
std::unique_ptr<policy::VlanT> compileVlan(const Port &port) {
    auto vlan = std::make_unique<policy::VlanT>();
    const Property *nested = port.properties.find("com.quillon.vswitch.port.vlanNestedTag");
    vlan->nested =
        nested != nullptr && nested->value.size() == sizeof(uint32_t) && u32At(nested->value, 0) != 0;
    const Property *stored = port.properties.find(kPortVlanKey);
    if (stored == nullptr) return vlan->nested ? std::move(vlan) : nullptr;
    const std::string_view record = stored->value;
    if (record.size() < kVlanHead || record.size() != kVlanHead + kVlanRange * u16At(record, 6)) {
        vlan->trunk = true;
        return vlan;
    }
    const uint16_t flags = u16At(record, 0);
    vlan->trunk = (flags & kTrunk) != 0;
    vlan->inPrivateMap = (flags & kPrivate) != 0;
    vlan->id = u16At(record, 2);
    if ((flags & kHasPriority) != 0) vlan->priority = priorityOf(port);
    if (vlan->trunk) addRanges(record, vlan.get());
    if (vlan->id > kMaxVlan) {
        *vlan = {};
        vlan->trunk = true;
    }
    return vlan;
}

// A malformed mask denies everything.
std::unique_ptr<policy::SecurityT> compileSecurity(const Port &port) {
    const Property *stored = port.properties.find("com.quillon.vswitch.port.security");
    if (stored == nullptr) return nullptr;
    constexpr uint32_t kAll = 7;
    const uint32_t mask = stored->value.size() == sizeof(uint32_t) ? u32At(stored->value, 0) : kAll;
    const uint32_t denied = mask > kAll ? kAll : mask;
    auto security = std::make_unique<policy::SecurityT>();
    security->promiscuous = (denied & 1) == 0;
    security->macChange = (denied & 2) == 0;
    security->forgedTransmits = (denied & 4) == 0;
    return security;
}

// A malformed filter adds no frames. The hash filter (0x20) has no hash in the record, so it adds none, too.
std::unique_ptr<policy::ReceiveFilterT> compileFilter(const Port &port) {
    constexpr size_t kSize = 200;
    constexpr size_t kFirstAt = 6;
    constexpr uint16_t kMost = 32;
    const Property *stored = port.properties.find("com.quillon.vswitch.port.extraEthFRP");
    if (stored == nullptr || stored->value.size() != kSize) return nullptr;
    const std::string_view record = stored->value;
    const uint32_t flags = u32At(record, 0);
    auto filter = std::make_unique<policy::ReceiveFilterT>();
    filter->unicast = (flags & 1) != 0;
    filter->multicast = (flags & 2) != 0;
    filter->allMulticast = (flags & 4) != 0;
    filter->broadcast = (flags & 8) != 0;
    filter->promiscuous = (flags & 0x10) != 0;
    filter->sink = (flags & 0x10000) != 0;
    const uint16_t count = filter->multicast ? std::min(u16At(record, 4), kMost) : uint16_t{0};
    for (size_t i = 0; i < count; ++i)
        filter->addresses.push_back(macFrom(record.substr(kFirstAt + i * kMacSize, kMacSize)));
    return filter;
}

std::unique_ptr<policy::LearningT> compileLearning(const Model &model, const Port &port) {
    const auto stored = portLearning(port);
    if (!stored) return nullptr;
    auto learning = std::make_unique<policy::LearningT>();
    learning->enabled = stored->learning;
    learning->flooding = stored->flooding;
    learning->limit = macLimitOf(model, port).value_or(macLimitOf(*port.owner));
    learning->dropAtLimit = stored->dropping;
    return learning;
}

std::unique_ptr<policy::PortT> compilePort(const Model &model, const Port &port, Slots &slots) {
    auto compiled = std::make_unique<policy::PortT>();
    compiled->number = port.number;
    compiled->slot = slots.of(portSlot(port.number));
    compiled->id = port.id;
    compiled->client = port.clientName();
    compiled->uplink = port.owner->uplinkSet.contains(port.id);
    // Sessions can use a port that has no client.
    compiled->link = port.nic != nullptr ? port.nic->wanted() : port.client.empty() || port.clientLink;
    compiled->blocked = port.blocked;
    compiled->mac = std::make_unique<policy::Mac>(macFrom(adapterMac(model, port)));
    if (port.nic != nullptr) compiled->mtu = port.nic->mtu;
    compiled->vlan = compileVlan(port);
    compiled->security = compileSecurity(port);
    compiled->filter = compileFilter(port);
    compiled->learning = compileLearning(model, port);
    compiled->teaming =
        compileTeaming(model, *port.owner, port.properties.find("com.quillon.vswitch.port.teaming.policy"));
    compiled->alwaysUplink = port.properties.text("com.quillon.vswitch.port.txUplink") == "always";
    compiled->groups = compileGroups(model, port, slots);
    compiled->hasMulticastList =
        compileMulticastList(port.properties.find("com.quillon.vswitch.port.mcast.user.addresses.override"),
                             &compiled->multicastList);
    compiled->ipfix = compileIpfix(port, slots);
    return compiled;
}

}  // namespace qvs::kernel
