// SPDX-License-Identifier: Apache-2.0
// What the model knows of ports: their VLANs, addresses and uplinks.
#include "datapath/model.h"

#include <algorithm>

namespace qvs::test {
namespace {

uint32_t xorOf(const uint8_t *at, size_t length) {
    uint32_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value ^= at[i];
    return value;
}

uint32_t xorOfMac(uint64_t mac) {
    uint32_t value = 0;
    for (; mac != 0; mac >>= 8)
        value ^= mac & 0xff;
    return value;
}

}  // namespace

uint64_t numberAt(const uint8_t *at, size_t length) {
    uint64_t value = 0;
    for (size_t i = 0; i < length; ++i)
        value = value << 8 | at[i];
    return value;
}

bool isIp(const Bytes &body) {
    return body.size() >= 22 && numberAt(body.data(), 2) == 0x0800;
}

Model::Model(const policy::SwitchT &policy) : policy_(policy) {
    chooseUplinks();
}

const policy::PortT *Model::find(uint32_t wanted) const {
    for (const auto &port : policy_.ports)
        if (port->number == wanted) return port.get();
    return nullptr;
}

// --- VLANs ---

int Model::primaryOf(int vlan) const {
    for (const auto &entry : policy_.privateVlans)
        if (entry->secondary == vlan) return entry->primary;
    return vlan;
}

bool Model::isMapped(const Port &port) const {
    for (const auto &entry : policy_.privateVlans)
        if (entry->primary == port.vlan->id || entry->secondary == port.vlan->id) return true;
    return false;
}

bool Model::sendsIn(const Port &port, int vlan) const {
    if (port.uplink || (port.vlan && port.vlan->trunk)) return receivesFrom(port, vlan);
    return vlan == (port.vlan ? port.vlan->id : 0);
}

bool Model::receivesFrom(const Port &port, int vlan) const {
    if (port.uplink && vlan == 0) return true;
    if (!port.vlan) return vlan == 0;
    if (port.vlan->trunk)
        return std::any_of(
            port.vlan->ranges.begin(), port.vlan->ranges.end(),
            [vlan](const policy::VlanRange &range) { return vlan >= range.first() && vlan <= range.last(); });
    const int own = port.vlan->id;
    if (!port.vlan->inPrivateMap) return vlan == own;
    for (const auto &entry : policy_.privateVlans) {
        if (entry->primary == own && (vlan == entry->primary || vlan == entry->secondary)) return true;
        if (entry->secondary != own || entry->primary == own) continue;
        if (vlan == entry->primary) return true;
        if (vlan == own && entry->type == policy::PrivateType::Community) return true;
    }
    return false;
}

// --- ports ---

uint64_t Model::addressOf(const Port &port) const {
    const State &state = states_.at(port.number);
    return state.changed != 0 ? state.changed : numberAt(port.mac->bytes()->data(), 6);
}

bool Model::isUp(const Port &port) const {
    return port.link && !port.blocked && states_.at(port.number).carrier;
}

bool Model::deniesAddress(const Port &port) const {
    if (port.uplink || !port.security || port.security->macChange) return false;
    return addressOf(port) != numberAt(port.mac->bytes()->data(), 6);
}

bool Model::isPromiscuous(const Port &port) const {
    return port.filter && port.filter->promiscuous && port.security && port.security->promiscuous;
}

void Model::setCarrier(uint32_t port, bool up) {
    states_[port].carrier = up;
    chooseUplinks();
}

void Model::setAddress(uint32_t port, uint64_t mac) {
    states_[port].changed = mac;
    chooseUplinks();
}

// --- teaming ---

const policy::TeamingT *Model::teamOf(const Port &port) const {
    return port.teaming ? port.teaming.get() : policy_.teaming.get();
}

bool Model::isUsable(const Port &port, uint32_t uplink) const {
    const policy::TeamingT *team = teamOf(port);
    return isUp(*find(uplink)) || (team != nullptr && !team->checkLink && !find(uplink)->blocked);
}

std::vector<uint32_t> Model::candidates(const Port &port) const {
    const policy::TeamingT *team = teamOf(port);
    std::vector<uint32_t> found;
    for (const auto &other : policy_.ports)
        if (team == nullptr && other->uplink && isUp(*other)) found.push_back(other->number);
    if (team == nullptr || team->balance == policy::Balance::Drop) return found;
    for (const uint32_t uplink : team->active)
        if (isUsable(port, uplink)) found.push_back(uplink);
    for (const uint32_t uplink : team->standby)
        if (found.empty() && isUsable(port, uplink)) found.push_back(uplink);
    return found;
}

uint32_t Model::usualUplink(const Port &port) const {
    const policy::TeamingT *team = teamOf(port);
    const std::vector<uint32_t> choice = candidates(port);
    if (choice.empty()) return 0;
    const auto balance = team != nullptr ? team->balance : policy::Balance::SourcePort;
    if (balance == policy::Balance::SourceMac || balance == policy::Balance::SourceIp)
        return choice[xorOfMac(addressOf(port)) % choice.size()];
    const uint32_t last = states_.at(port.number).lastUplink;
    if (team != nullptr && team->rolling && last != 0 && isUsable(port, last)) return last;
    return balance == policy::Balance::Explicit ? choice[0] : choice[port.number % choice.size()];
}

void Model::chooseUplinks() {
    for (const auto &port : policy_.ports)
        states_[port->number];
    for (const auto &port : policy_.ports) {
        if (port->uplink) continue;
        State &state = states_[port->number];
        state.uplink = usualUplink(*port);
        if (state.uplink != 0) state.lastUplink = state.uplink;
    }
}

uint32_t Model::uplinkOf(const Port &port, const Packet &packet) const {
    const policy::TeamingT *team = teamOf(port);
    const std::vector<uint32_t> choice = candidates(port);
    const auto balance = team != nullptr ? team->balance : policy::Balance::SourcePort;
    if (choice.empty()) return 0;
    if (balance == policy::Balance::SourceIp && isIp(packet.body))
        return choice[xorOf(packet.body.data() + 14, 8) % choice.size()];
    if (balance == policy::Balance::SourceIp || balance == policy::Balance::SourceMac)
        return choice[xorOfMac(packet.source) % choice.size()];
    return states_.at(port.number).uplink;
}

bool Model::acceptsUnicast(const Port &port, uint32_t uplink) const {
    if (states_.at(port.number).uplink == uplink) return true;
    const policy::TeamingT *team = teamOf(port);
    return team == nullptr || (team->balance != policy::Balance::Drop && has(team->active, uplink));
}

}  // namespace qvs::test
