// SPDX-License-Identifier: Apache-2.0
// Which ports receive a multicast frame: lists of groups, receive filters, and groups that ports have joined.
#include <algorithm>
#include <string_view>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr uint16_t kAnyVlan = UINT16_MAX;  // of groups that the configuration joins
constexpr size_t kMacLength = 6;

bool contains(const std::vector<MacAddress> &sorted, MacAddress address) {
    return std::binary_search(sorted.begin(), sorted.end(), address);
}

bool accepts(const Member &member, Bytes source) {
    const std::string_view text(reinterpret_cast<const char *>(source.data()), source.size());
    const bool listed = std::find(member.sources.begin(), member.sources.end(), text) != member.sources.end();
    return listed != member.exclude;
}

bool readGroup(const Passage &passage, IpHeader &ip) {
    return readIp(passage.frame->bytes, passage.body + 2, passage.type, ip);
}

Member configuredMember(const policy::GroupT &group, uint32_t port, Slot *slot) {
    Member member;
    member.port = port;
    member.configured = true;
    member.exclude = group.sources.empty();
    member.slot = slot;
    for (const auto &source : group.sources)
        member.sources.emplace_back(source->address.begin(), source->address.end());
    return member;
}

}  // namespace

GroupKey groupKey(Bytes address, uint16_t filing) {
    GroupKey key;
    key.length = static_cast<uint8_t>(std::min(address.size(), key.address.size()));
    std::copy_n(address.begin(), key.length, key.address.begin());
    key.filing = filing;
    return key;
}

size_t GroupKeyHash::operator()(const GroupKey &key) const {
    const std::string_view bytes(reinterpret_cast<const char *>(key.address.data()), key.address.size());
    return std::hash<std::string_view>()(bytes) ^ static_cast<size_t>(key.filing) << 8 ^ key.length;
}

// Groups that the configuration joins, and those found by snooping as far as their ports are still there.
void Engine::compileGroups(const std::vector<Port> &former) {
    const Groups found = std::move(groups_);
    groups_.clear();
    members_ = 0;
    for (const Port &port : ports_)
        for (const auto &group : port.policy->groups)
            if (!group->address.empty())
                groups_[groupKey(group->address, kAnyVlan)].push_back(
                    configuredMember(*group, port.index, slotAt(group->slot)));
    if (!snoops()) return;
    for (const auto &[key, members] : found)
        for (Member member : members) {
            const Port *port = member.configured ? nullptr : find(former[member.port].number);
            if (port == nullptr) continue;
            member.port = port->index;
            groups_[key].push_back(member);
            ++members_;
        }
}

// Groups of link-local protocols, which have to reach every port of the network.
bool Engine::isLinkLocalGroup(const Passage &passage) const {
    constexpr MacAddress kBridgeGroups = 0x0180c2000000;
    if ((passage.destination & ~MacAddress{0xffffff}) == kBridgeGroups) return true;
    IpHeader ip;
    if (!readGroup(passage, ip)) return false;
    const Bytes group = ip.destination;
    if (group.size() == 4) return group[0] == 224 && group[1] == 0 && group[2] == 0;
    constexpr std::array<uint8_t, 16> kAllNodes = {0xff, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    return std::equal(group.begin(), group.end(), kAllNodes.begin());
}

void Engine::markMembers(const Passage &passage) {
    if (groups_.empty()) return;
    const Bytes mac = passage.frame->bytes.first(kMacLength);
    markMembersOf(groupKey(mac, kAnyVlan), {}, passage);
    IpHeader ip;
    if (!readGroup(passage, ip)) return;
    markMembersOf(groupKey(ip.destination, kAnyVlan), ip.source, passage);
    if (snoops()) markMembersOf(groupKey(ip.destination, passage.filing), ip.source, passage);
}

void Engine::markMembersOf(const GroupKey &key, Bytes source, const Passage &passage) {
    const auto found = groups_.find(key);
    if (found == groups_.end()) return;
    for (const Member &member : found->second) {
        Port &port = ports_[member.port];
        const bool reaches = port.index != passage.from && port.carries[passage.vlan] &&
                             (!ports_[passage.from].uplink || port.current == passage.from);
        if (!reaches) continue;
        const bool accepted = accepts(member, source);
        if (accepted) port.wanted = passage.id;
        if (member.slot == nullptr) continue;
        add(*member.slot, accepted ? kGroupPackets : kGroupFiltered);
        if (accepted) add(*member.slot, kGroupBytes, passage.frame->bytes.size());
    }
}

bool Engine::wantsGroup(const Port &port, const Passage &passage) const {
    if (port.promiscuous || port.allGroups || port.wanted == passage.id) return true;
    if (contains(port.filterGroups, passage.destination)) return true;
    if (snoops()) return port.routerUntil > now_;
    return port.multicastList == nullptr || contains(*port.multicastList, passage.destination);
}

bool Engine::receivesReports(const Port &port) const {
    return port.promiscuous || port.routerUntil > now_;
}

}  // namespace qvs::datapath
