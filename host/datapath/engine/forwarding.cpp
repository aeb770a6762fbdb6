// SPDX-License-Identifier: Apache-2.0
// Forwards frames: checks the sender, determines the VLAN, and selects the ports that receive the frame.
#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr MacAddress kControlGroups = 0x0180c2000000;  // 16 addresses that no switch forwards

bool isControl(MacAddress address) {
    return (address & ~MacAddress{0xf}) == kControlGroups;
}

bool separates(const Port &to, const Passage &passage, const std::array<uint16_t, kVlans> &filing) {
    return to.inPrivateMap && to.hasVlan && filing[to.vlan] == passage.filing;
}

}  // namespace

void Engine::receive(uint32_t number, const Frame &frame, Time now) {
    now_ = now;
    Port *from = find(number);
    if (from == nullptr) return;
    Passage passage;
    passage.frame = &frame;
    passage.id = ++lastFrame_;
    passage.from = from->index;
    if (const std::optional<Drop> reason = admit(*from, passage)) {
        drop(*from, *reason, true);
        return;
    }
    countIn(*from, passage);
    mirrorIn(*from, passage);
    if (isControl(passage.destination)) {
        add(*from->slot, kPacketsInException);
        if (from->uplink) control(*from, passage);
        return;
    }
    if (isProbe(*from, passage)) return;
    if ((encapsulates_ && answersProbe(passage)) || takesBeacon(passage)) return;
    if (isGroup(passage.destination))
        forwardGroup(*from, passage);
    else
        forwardUnicast(*from, passage);
    if (from->meter != nullptr) meterIn(*from, passage);
}

std::optional<Drop> Engine::admit(Port &from, Passage &passage) {
    if (!from.up) return Drop::Blocked;
    if (const auto reason = parse(passage)) return reason;
    if (from.mirrorSilent) return Drop::MirrorInput;
    if (const auto reason = classify(from, passage)) return reason;
    if (!from.uplink)
        if (const auto reason = checkSource(from, passage)) return reason;
    const size_t header = kAddresses + 2 + (passage.tagged ? kTagSize : 0) + (passage.inner ? kTagSize : 0);
    if (passage.frame->bytes.size() < header) return Drop::Malformed;
    passage.packet = longestPacket(*passage.frame, header);
    if (passage.packet == kBadOffload) return Drop::Malformed;
    if (passage.packet > policy_->mtu) return Drop::TooLong;
    if (from.uplink) return isReflection(passage) ? std::optional(Drop::Reflected) : std::nullopt;
    return learn(from, passage);
}

std::optional<Drop> Engine::parse(Passage &passage) {
    const Bytes bytes = passage.frame->bytes;
    if (bytes.size() < kHeaderSize) return Drop::Malformed;
    passage.destination = readMac(bytes.data());
    passage.source = readMac(bytes.data() + 6);
    passage.type = read16(bytes.data() + kAddresses);
    if (isGroup(passage.source)) return Drop::Malformed;
    if (passage.type == kTagType && bytes.size() < kHeaderSize + kTagSize) return Drop::Malformed;
    return std::nullopt;
}

std::optional<Drop> Engine::checkSource(Port &from, const Passage &passage) {
    if (from.address == 0) {
        from.changedTo = passage.source;
        useAddress(from);
        chooseUplinks(false);
    }
    if (from.deniedAddress) return Drop::ChangedAddress;
    if (!from.checksSource || passage.source == from.address) return std::nullopt;
    if (policy_->staticAllowed && ownsStatic(from, passage)) return std::nullopt;
    return Drop::ForgedSource;
}

// Determines the VLAN of the frame, and which of its tags belong to the client.
std::optional<Drop> Engine::classify(const Port &from, Passage &passage) const {
    const uint8_t *bytes = passage.frame->bytes.data();
    uint16_t tag = 0;
    const bool hasTag = passage.type == kTagType;
    if (hasTag) tag = read16(bytes + kHeaderSize);
    passage.tagged = hasTag && !from.nested;
    passage.priority = tag & kPriorityMask;
    if (passage.tagged) {
        passage.body = kAddresses + kTagSize;
        passage.type = read16(bytes + passage.body);
    }
    passage.inner = passage.type == kTagType;
    const uint16_t vlan = passage.tagged ? tag & kVlanMask : 0;
    if (!from.hasVlan) return Drop::PrivateVlan;
    if (from.trunk) {
        if (!from.carries[vlan]) return Drop::Vlan;
        passage.vlan = vlan;
    } else {
        if (vlan != 0) return Drop::Vlan;
        passage.vlan = from.vlan;
    }
    passage.filing = filing_[passage.vlan];
    const int priority = from.policy->vlan != nullptr && !from.uplink ? from.policy->vlan->priority : -1;
    if (priority >= 0)
        passage.priority = static_cast<uint16_t>((priority & 7) << 13 | (passage.priority & 0x1000));
    return std::nullopt;
}

void Engine::forwardUnicast(Port &from, Passage &passage) {
    if (!from.uplink && from.policy->alwaysUplink) {
        sendByUplink(from, passage);
    } else {
        const bool known = deliverToOwner(from, passage);
        if (!known && !from.uplink) sendByUplink(from, passage);
        deliverExtra(from, passage, known);
    }
    if (passage.stranded && passage.attempts == 0) drop(from, Drop::NoUplink, true);
}

// Returns whether the destination is behind a port of this switch.
bool Engine::deliverToOwner(const Port &from, Passage &passage) {
    bool known = false;
    for (uint32_t index = adapters_.first(passage.destination); index != kNone; index = adapters_.next(index))
        if (ports_[index].address == passage.destination && offerUnicast(from, ports_[index], passage))
            known = true;
    if (known) return true;
    const LearntAddress *entry = table_.find(passage.destination, passage.filing, now_);
    add(*slot_, kLookups);
    if (entry == nullptr) add(*slot_, kMisses);
    return entry != nullptr && offerUnicast(from, ports_[entry->port], passage);
}

// Returns false if the port is in another network, so that the destination is somewhere else.
bool Engine::offerUnicast(const Port &from, Port &to, Passage &passage) {
    if (to.index == from.index) return sendsIn(to, passage.vlan);
    if (!to.carries[passage.vlan]) {
        if (!separates(to, passage, filing_)) return false;
        drop(to, Drop::PrivateVlan, false);
        return true;
    }
    if (!from.uplink || acceptsUnicast(to, from.index)) deliver(to, passage);
    return true;
}

// Delivers to the ports that receive more than the frames for their own addresses.
void Engine::deliverExtra(const Port &from, Passage &passage, bool known) {
    const auto deliverTo = [&](const std::vector<uint32_t> &ports) {
        for (const uint32_t index : ports) {
            Port &to = ports_[index];
            if (index == from.index || !to.carries[passage.vlan]) continue;
            if (from.uplink && to.current != from.index) continue;
            if (to.got != passage.id && deliver(to, passage) && &ports == &unknown_) add(*to.slot, kFlooded);
        }
    };
    deliverTo(promiscuous_);
    if (!known) deliverTo(unknown_);
}

void Engine::forwardGroup(Port &from, Passage &passage) {
    const bool broadcast = passage.destination == kBroadcast;
    const bool forRouters = !broadcast && snoops() && snoop(from, passage);
    const bool always = broadcast || (!forRouters && isLinkLocalGroup(passage));
    if (!from.uplink) sendByUplink(from, passage);
    if (from.uplink || !from.policy->alwaysUplink) {
        if (!always && !forRouters) markMembers(passage);
        for (Port &to : ports_) {
            if (to.uplink || to.index == from.index || !to.carries[passage.vlan]) continue;
            if (from.uplink && to.current != from.index) continue;
            if (forRouters ? receivesReports(to) : always || wantsGroup(to, passage)) deliver(to, passage);
        }
    }
    if (passage.stranded && passage.attempts == 0) drop(from, Drop::NoUplink, true);
}

void Engine::sendByUplink(Port &from, Passage &passage) {
    const Team &team = teams_[from.team];
    if (team.deaf && team.shotgun) {
        for (const uint32_t index : team.candidates)
            if (ports_[index].carries[passage.vlan]) deliver(ports_[index], passage);
        return;
    }
    const uint32_t index = uplinkFor(from, passage);
    if (index == kNone)
        passage.stranded = true;
    else if (ports_[index].carries[passage.vlan])
        deliver(ports_[index], passage);
    else
        drop(ports_[index], Drop::Vlan, false);
}

bool Engine::deliver(Port &to, Passage &passage) {
    to.got = passage.id;
    if (to.mirrorOnly || to.index == passage.owner ||
        (passage.returned && to.address == passage.source && sendsIn(to, passage.vlan)))
        return false;
    ++passage.attempts;
    if (const std::optional<Drop> reason = refuse(to, passage)) {
        drop(to, *reason, false);
        return false;
    }
    // An uplink keeps the priority of frames without a VLAN in a tag, too. A frame whose client has tags of
    // its own needs one of the switch, or the client's would be taken for it.
    const bool tagged =
        to.trunk && (passage.vlan != 0 || passage.inner || (to.uplink && passage.priority != 0));
    const Frame &frame = form(passage, tagged);
    if (!surroundings_.send(to.number, frame)) {
        drop(to, Drop::Busy, false);
        return false;
    }
    countOut(to, passage.destination, frame.bytes.size());
    mirrorOut(to, passage);
    passage.to = to.number;
    passage.left = passage.left || to.uplink;
    if (to.meter != nullptr) meterOut(to, passage);
    return true;
}

std::optional<Drop> Engine::refuse(const Port &to, const Passage &passage) const {
    if (!to.up) return Drop::Blocked;
    if (to.deniedAddress) return Drop::ChangedAddress;
    if (!to.trunk && !to.nested && passage.inner) return Drop::Vlan;
    if (to.uplink && passage.packet > to.policy->mtu) return Drop::TooLong;
    return std::nullopt;
}

// The frame with or without the tag of its VLAN, made once for all receivers.
const Frame &Engine::form(Passage &passage, bool tagged) {
    const Frame &original = *passage.frame;
    const uint16_t tag = passage.priority | passage.vlan;
    if (tagged == passage.tagged && (!tagged || read16(original.bytes.data() + kHeaderSize) == tag))
        return original;
    std::optional<Frame> &made = tagged ? passage.tagForm : passage.plain;
    if (made) return *made;
    std::vector<uint8_t> &bytes = tagged ? tagBytes_ : plainBytes_;
    const size_t head = kAddresses + (tagged ? kTagSize : 0);
    const size_t rest = original.bytes.size() - passage.body;
    bytes.resize(head + rest);
    std::memcpy(bytes.data(), original.bytes.data(), kAddresses);
    if (tagged) {
        write16(bytes.data() + kAddresses, kTagType);
        write16(bytes.data() + kHeaderSize, tag);
    }
    std::memcpy(bytes.data() + head, original.bytes.data() + passage.body, rest);
    made = Frame{bytes, shifted(original.offload, static_cast<int>(head) - static_cast<int>(passage.body))};
    return *made;
}

void Engine::drop(Port &port, Drop reason, bool sent) {
    add(*port.slot, sent ? kPacketsInDropped : kPacketsOutDropped);
    add(*port.slot, kDropped + static_cast<uint32_t>(reason));
}

namespace {

// The counters of unicast, multicast and broadcast are adjacent, packets before bytes.
void count(Slot &slot, uint32_t first, MacAddress destination, size_t bytes) {
    const uint32_t kind = destination == kBroadcast ? 4 : isGroup(destination) ? 2 : 0;
    add(slot, first + kind);
    add(slot, first + kind + 1, bytes);
}

}  // namespace

void Engine::countIn(Port &from, const Passage &passage) {
    count(*from.slot, kPacketsInUnicast, passage.destination, passage.frame->bytes.size());
}

void Engine::countOut(Port &to, MacAddress destination, size_t bytes) {
    count(*to.slot, kPacketsOutUnicast, destination, bytes);
}

}  // namespace qvs::datapath
