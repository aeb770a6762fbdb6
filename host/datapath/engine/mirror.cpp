// SPDX-License-Identifier: Apache-2.0
// Mirror sessions: which frames are copied, and to which ports the copies go.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

using policy::MirrorType;

void setVlans(const std::vector<uint16_t> &vlans, VlanSet &set) {
    for (const uint16_t vlan : vlans)
        if (vlan < kVlans) set.set(vlan);
}

bool containsVlan(const std::vector<uint16_t> &vlans, uint16_t vlan) {
    return std::find(vlans.begin(), vlans.end(), vlan) != vlans.end();
}

}  // namespace

void Engine::compileMirrors() {
    const std::vector<MirrorSession> former = std::move(sessions_);
    sessions_.clear();
    remoteIn_.reset();
    remoteOut_.reset();
    encapsulates_ = false;
    for (const auto &policy : policy_->mirrors) {
        const auto number = static_cast<uint32_t>(sessions_.size());
        MirrorSession &session = sessions_.emplace_back();
        session.policy = policy.get();
        session.slot = slotAt(policy->slot);
        session.number = number;
        compileMirrorSources(session);
        for (const auto &destination : policy->destinations)
            compileMirrorDestination(session, *destination);
        encapsulates_ = encapsulates_ || !session.targets.empty();
        keepMirrorState(session, former);
    }
}

void Engine::compileMirrorSources(const MirrorSession &session) {
    const policy::MirrorSessionT &policy = *session.policy;
    for (const uint32_t number : policy.sourcesIn)
        if (Port *port = find(number)) port->mirrorIn.push_back(session.number);
    for (const uint32_t number : policy.sourcesOut)
        if (Port *port = find(number)) port->mirrorOut.push_back(session.number);
    if (policy.type != MirrorType::RemoteDestination) return;
    setVlans(policy.vlansIn, remoteIn_);
    setVlans(policy.vlansOut, remoteOut_);
}

void Engine::compileMirrorDestination(MirrorSession &session, const policy::MirrorDestinationT &destination) {
    const policy::MirrorSessionT &policy = *session.policy;
    const size_t length = destination.address.size();
    if (Port *port = find(destination.port)) {
        session.ports.push_back(port->index);
        port->mirrorOnly = port->mirrorOnly || policy.noOutput;
        port->mirrorSilent = port->mirrorSilent || policy.noInput;
    } else if (policy.type == MirrorType::LogicalSpan && length == 6) {
        const MacAddress address = readMac(destination.address.data());
        for (const Port &other : ports_)
            if (!other.uplink && other.address == address) session.ports.push_back(other.index);
    } else if (policy.type == MirrorType::EncapsulatedSource && (length == 4 || length == 16)) {
        MirrorTarget &target = session.targets.emplace_back();
        std::copy(destination.address.begin(), destination.address.end(), target.address.begin());
        target.length = length;
    }
}

// The known next hops of targets do not depend on the policies.
void Engine::keepMirrorState(MirrorSession &session, const std::vector<MirrorSession> &former) {
    for (const MirrorSession &other : former)
        for (const MirrorTarget &known : other.targets)
            for (MirrorTarget &target : session.targets)
                if (target.address == known.address && target.length == known.length) target = known;
}

void Engine::mirrorIn(const Port &from, Passage &passage) {
    mirrorBy(from.mirrorIn, passage, true);
    if (from.uplink && remoteIn_[passage.vlan]) mirrorRemote(&policy::MirrorSessionT::vlansIn, passage, true);
}

void Engine::mirrorOut(const Port &to, Passage &passage) {
    mirrorBy(to.mirrorOut, passage, false);
    if (to.uplink && remoteOut_[passage.vlan])
        mirrorRemote(&policy::MirrorSessionT::vlansOut, passage, false);
}

void Engine::mirrorBy(const std::vector<uint32_t> &sessions, Passage &passage, bool sent) {
    for (const uint32_t index : sessions)
        mirror(sessions_[index], passage, sent);
}

void Engine::mirrorRemote(std::vector<uint16_t> policy::MirrorSessionT::*vlans, Passage &passage, bool sent) {
    for (MirrorSession &session : sessions_)
        if (session.policy->type == MirrorType::RemoteDestination &&
            containsVlan(session.policy->*vlans, passage.vlan))
            mirror(session, passage, sent);
}

// The copy starts from the frame without the tag of its VLAN, which is put back if the session keeps it.
void Engine::mirror(MirrorSession &session, Passage &passage, bool sent) {
    const policy::MirrorSessionT &policy = *session.policy;
    add(*session.slot, sent ? kMirrorTakenIn : kMirrorTakenOut);
    add(*session.slot, sent ? kMirrorTakenInBytes : kMirrorTakenOutBytes, passage.frame->bytes.size());
    if (policy.sampling > 1 && session.seen++ % policy.sampling != 0)
        return add(*session.slot, kMirrorSkipped);
    if (session.ports.empty() && session.targets.empty()) return add(*session.slot, kMirrorDropped);
    const Frame &plain = form(passage, false);
    const size_t size = plain.bytes.size();
    const size_t snap = policy.snapLength <= 0
                            ? size
                            : std::max<size_t>(static_cast<uint32_t>(policy.snapLength), kHeaderSize);
    const bool cut = snap < size;
    const size_t kept = std::min(snap, size);
    std::array<uint8_t, 2 * kTagSize> tags{};
    size_t length = 0;
    const auto addTag = [&](uint32_t tag) {
        write16(tags.data() + length, kTagType);
        write16(tags.data() + length + 2, tag);
        length += kTagSize;
    };
    if (policy.encapsulated) addTag(policy.encapVlan & kVlanMask);
    if (policy.keepVlan && passage.vlan != 0) addTag(passage.priority | passage.vlan);
    copyBytes_.resize(kept + length);
    std::memcpy(copyBytes_.data(), plain.bytes.data(), kAddresses);
    std::memcpy(copyBytes_.data() + kAddresses, tags.data(), length);
    std::memcpy(copyBytes_.data() + kAddresses + length, plain.bytes.data() + kAddresses, kept - kAddresses);
    Frame copy = {copyBytes_};
    if (!cut) copy.offload = shifted(plain.offload, static_cast<int>(length));
    if (cut) add(*session.slot, kMirrorTruncated);
    for (const uint32_t port : session.ports)
        if (port != passage.from) sendCopy(session, ports_[port], copy);
    if (session.targets.empty()) return;
    // An encapsulated copy has the tag of the session outside.
    Frame inner = plain;
    inner.bytes = inner.bytes.first(kept);
    if (cut) inner.offload = {};
    for (MirrorTarget &target : session.targets)
        if (!complete(inner, SIZE_MAX,
                      [&](Bytes bytes) { encapsulate(session, target, bytes, passage, cut); }))
            add(*session.slot, kMirrorDropped);
}

void Engine::sendCopy(MirrorSession &session, Port &to, const Frame &frame) {
    const bool sent = to.up && surroundings_.send(to.number, frame);
    if (!sent) {
        drop(to, to.up ? Drop::Busy : Drop::Blocked, false);
        add(*session.slot, to.up ? kMirrorBusy : kMirrorNoLink);
        return;
    }
    countOut(to, readMac(frame.bytes.data()), frame.bytes.size());
    add(*session.slot, kMirroredPackets);
    add(*session.slot, kMirroredBytes, frame.bytes.size());
}

}  // namespace qvs::datapath
