// SPDX-License-Identifier: Apache-2.0
// The rules of docs/datapath.md in their plainest form.
#include "datapath/model.h"

#include <algorithm>
#include <bit>

namespace qvs::test {
namespace {

enum Reason {
    kPassed = -1,
    kBlocked,
    kMalformed,
    kTooLong,
    kVlan,
    kPrivate,
    kForged,
    kChanged,
    kLimit,
    kNoUplink,
    kReflected,
    kMirror
};

bool listed(const std::vector<policy::Mac> &list, uint64_t mac) {
    return std::any_of(list.begin(), list.end(),
                       [mac](const policy::Mac &entry) { return numberAt(entry.bytes()->data(), 6) == mac; });
}

}  // namespace

// --- the way of a frame ---

std::vector<Sent> Model::receive(uint32_t port, const Bytes &bytes, uint64_t now) {
    now_ = now;
    sent_.clear();
    offered_.clear();
    std::erase_if(learnt_, [this](const auto &entry) {
        return policy_.aging != 0 && now_ - entry.second.seen >= policy_.aging * 1000ull;
    });
    const Port &from = *find(port);
    Packet packet;
    int reason = kBlocked;
    if (isUp(from)) reason = parse(from, bytes, packet);
    if (reason == kPassed) reason = admit(from, packet);
    if (reason != kPassed) {
        drop(from, reason);
        return sent_;
    }
    mirror(true, from, packet);
    if (packet.to >> 4 != 0x0180c200000) forward(packet);
    return sent_;
}

int Model::parse(const Port &from, const Bytes &bytes, Packet &packet) const {
    if (bytes.size() < 14 || (bytes[6] & 1) != 0) return kMalformed;
    const bool hasTag = numberAt(&bytes[12], 2) == 0x8100;
    if (hasTag && bytes.size() < 18) return kMalformed;
    for (size_t i = 0; i < policy_.mirrors.size(); ++i)
        for (const auto &destination : policy_.mirrors[i]->destinations)
            if (policy_.mirrors[i]->noInput && destination->port == from.number) return kMirror;
    packet.from = &from;
    packet.to = numberAt(&bytes[0], 6);
    packet.source = numberAt(&bytes[6], 6);
    packet.addresses.assign(bytes.begin(), bytes.begin() + 12);
    const int tag = hasTag ? static_cast<int>(numberAt(&bytes[14], 2)) : -1;
    const bool nested = from.vlan && from.vlan->nested && !from.vlan->trunk && !from.uplink;
    packet.body.assign(bytes.begin() + (hasTag && !nested ? 16 : 12), bytes.end());
    packet.priority = hasTag ? tag >> 12 : 0;
    if (from.vlan && !from.uplink && from.vlan->priority >= 0)
        packet.priority = from.vlan->priority << 1 | (packet.priority & 1);
    const int reason = classify(from, nested ? -1 : tag, packet);
    if (reason != kPassed) return reason;
    packet.payload = packet.body.size() - 2;
    return kPassed;
}

int Model::classify(const Port &from, int tag, Packet &packet) const {
    const int named = tag < 0 ? 0 : tag & 0xfff;
    if (from.uplink || (from.vlan && from.vlan->trunk)) {
        packet.vlan = named;
        return receivesFrom(from, named) ? kPassed : kVlan;
    }
    if (from.vlan && from.vlan->inPrivateMap && !isMapped(from)) return kPrivate;
    packet.vlan = from.vlan ? from.vlan->id : 0;
    return named == 0 ? kPassed : kVlan;
}

int Model::admit(const Port &from, Packet &packet) {
    if (!from.uplink) {
        if (deniesAddress(from)) return kChanged;
        if (from.security && !from.security->forgedTransmits && packet.source != addressOf(from))
            return kForged;
    }
    if (packet.inner() && packet.body.size() < 6) return kMalformed;
    if (packet.inner()) packet.payload -= 4;
    if (packet.payload > policy_.mtu) return kTooLong;
    return from.uplink ? admitFromOutside(packet) : learn(from, packet);
}

int Model::admitFromOutside(Packet &packet) {
    for (const auto &port : policy_.ports)
        if (!port->uplink && addressOf(*port) == packet.source && sendsIn(*port, packet.vlan))
            packet.owners.insert(port->number);
    const std::pair key(primaryOf(packet.vlan), packet.source);
    const auto found = learnt_.find(key);
    if (packet.owners.empty() && found != learnt_.end()) {
        if (now_ - found->second.seen < 3000)
            packet.owners.insert(found->second.port);
        else
            learnt_.erase(found);
    }
    const bool comesBack = std::all_of(packet.owners.begin(), packet.owners.end(),
                                       [this](uint32_t owner) { return find(owner)->alwaysUplink; });
    return comesBack ? kPassed : kReflected;
}

int Model::learn(const Port &from, const Packet &packet) {
    if (!from.learning || !from.learning->enabled) return kPassed;
    for (const auto &port : policy_.ports)
        if (!port->uplink && addressOf(*port) == packet.source &&
            (port->number == from.number || sendsIn(*port, packet.vlan)))
            return kPassed;
    const std::pair key(primaryOf(packet.vlan), packet.source);
    const bool isKnown = learnt_.count(key) != 0;
    if (!isKnown || learnt_[key].port != from.number) {
        const auto ofPort = std::count_if(learnt_.begin(), learnt_.end(), [&](const auto &entry) {
            return entry.second.port == from.number;
        });
        const bool full = ofPort >= from.learning->limit || (!isKnown && learnt_.size() >= policy_.macLimit);
        if (full) return from.learning->dropAtLimit ? kLimit : kPassed;
    }
    learnt_[key] = {from.number, now_};
    return kPassed;
}

void Model::forward(Packet &packet) {
    const Port &from = *packet.from;
    const bool group = (packet.to >> 40 & 1) != 0;
    const bool locally = from.uplink || !from.alwaysUplink;
    const bool known = !group && locally && byAddress(packet);
    bool stranded = false;
    if (!from.uplink && !known) {
        const uint32_t uplink = uplinkOf(from, packet);
        stranded = uplink == 0;
        if (!stranded && receivesFrom(*find(uplink), packet.vlan))
            deliver(*find(uplink), packet);
        else if (!stranded)
            drop(*find(uplink), kVlan);
    }
    for (const auto &port : policy_.ports) {
        if (!locally || port->uplink || port->number == from.number || offered_.count(port->number) != 0)
            continue;
        if (!receivesFrom(*port, packet.vlan)) continue;
        if (from.uplink && states_.at(port->number).uplink != from.number) continue;
        const bool takesUnknown = (port->filter && port->filter->sink) ||
                                  (port->learning && port->learning->enabled && port->learning->flooding);
        if (isPromiscuous(*port) || (group ? wants(*port, packet) : !known && takesUnknown))
            deliver(*port, packet);
    }
    if (stranded && offered_.empty()) drop(from, kNoUplink);
}

// Whether a port of this switch has the address, in the network of the frame.
bool Model::byAddress(Packet &packet) {
    bool known = false;
    for (const auto &port : policy_.ports)
        if (!port->uplink && addressOf(*port) == packet.to && offer(*port, packet)) known = true;
    if (known) return true;
    const auto found = learnt_.find({primaryOf(packet.vlan), packet.to});
    if (found == learnt_.end()) return false;
    return offer(*find(found->second.port), packet);
}

bool Model::offer(const Port &to, Packet &packet) {
    if (to.number == packet.from->number) return sendsIn(to, packet.vlan);
    if (receivesFrom(to, packet.vlan)) {
        if (!packet.from->uplink || acceptsUnicast(to, packet.from->number)) deliver(to, packet);
        return true;
    }
    if (!to.vlan || to.vlan->trunk || !to.vlan->inPrivateMap || !isMapped(to)) return false;
    if (primaryOf(to.vlan->id) != primaryOf(packet.vlan)) return false;
    drop(to, kPrivate);
    return true;
}

bool Model::wants(const Port &port, const Packet &packet) const {
    if (packet.to == 0xffffffffffff || packet.to >> 24 == 0x0180c2) return true;
    const uint8_t *group = isIp(packet.body) ? packet.body.data() + 18 : nullptr;
    if (group != nullptr && numberAt(group, 3) == 0xe00000) return true;
    if (port.filter && port.filter->allMulticast) return true;
    if (port.filter && port.filter->multicast && listed(port.filter->addresses, packet.to)) return true;
    for (const auto &joined : port.groups) {
        const size_t length = joined->address.size();
        const uint8_t *wanted = length == 4 ? group : packet.addresses.data();
        if (wanted == nullptr || !std::equal(wanted, wanted + length, joined->address.begin())) continue;
        if (joined->sources.empty()) return true;
        for (const auto &source : joined->sources)
            if (std::equal(source->address.begin(), source->address.end(), packet.body.data() + 14))
                return true;
    }
    if (policy_.multicast == policy::Multicast::Snooping) return false;
    if (port.hasMulticastList) return listed(port.multicastList, packet.to);
    return !policy_.hasMulticastList || listed(policy_.multicastList, packet.to);
}

void Model::deliver(const Port &to, const Packet &packet) {
    if (packet.owners.count(to.number) != 0) return;
    for (const auto &session : policy_.mirrors)
        for (const auto &destination : session->destinations)
            if (session->noOutput && destination->port == to.number) return;
    offered_.insert(to.number);
    const bool trunk = to.uplink || (to.vlan && to.vlan->trunk);
    const bool nested = !trunk && to.vlan && to.vlan->nested;
    if (!isUp(to)) return drop(to, kBlocked);
    if (deniesAddress(to)) return drop(to, kChanged);
    if (!trunk && !nested && packet.inner()) return drop(to, kVlan);
    if (to.uplink && packet.payload > to.mtu) return drop(to, kTooLong);
    Bytes bytes = packet.addresses;
    if (trunk && (packet.vlan != 0 || packet.inner() || (to.uplink && packet.priority != 0))) {
        const auto tag = packet.priority << 12 | packet.vlan;
        bytes.insert(bytes.end(), {0x81, 0, static_cast<uint8_t>(tag >> 8), static_cast<uint8_t>(tag)});
    }
    bytes.insert(bytes.end(), packet.body.begin(), packet.body.end());
    sent_.push_back({to.number, bytes});
    mirror(false, to, packet);
}

void Model::mirror(bool sent, const Port &port, const Packet &packet) {
    for (size_t i = 0; i < policy_.mirrors.size(); ++i) {
        const policy::MirrorSessionT &session = *policy_.mirrors[i];
        if (!has(sent ? session.sourcesIn : session.sourcesOut, port.number)) continue;
        if (session.sampling > 1 && mirrored_[i]++ % session.sampling != 0) continue;
        Bytes body = packet.body;
        if (session.snapLength > 0)
            body.resize(std::min(body.size(), static_cast<size_t>(std::max(session.snapLength, 14) - 12)));
        Bytes bytes = packet.addresses;
        const auto tag = [&bytes](int value) {
            bytes.insert(bytes.end(),
                         {0x81, 0, static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
        };
        if (session.encapsulated) tag(session.encapVlan);
        if (session.keepVlan && packet.vlan != 0) tag(packet.priority << 12 | packet.vlan);
        bytes.insert(bytes.end(), body.begin(), body.end());
        for (const auto &destination : session.destinations) {
            if (destination->port == packet.from->number) continue;
            if (isUp(*find(destination->port)))
                sent_.push_back({destination->port, bytes});
            else
                drop(*find(destination->port), kBlocked);
        }
    }
}

}  // namespace qvs::test
