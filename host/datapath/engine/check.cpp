// SPDX-License-Identifier: Apache-2.0
// The check of VLANs and MTU: probes leave each uplink in each VLAN, and switches that run the check answer
// them.
//
// A probe is a frame of type 0x88b6: u32 mark, u8 version, u8 kind, the address of the switch that asks, u32
// uplink, u32 round, u16 length of its packet (0: it asks for the VLAN only). The answer is the same without
// what pads it.
#include <algorithm>

#include "datapath/byte_writer.h"
#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr MacAddress kProbeGroup = 0x031000000001;
constexpr uint32_t kMark = 0x51565343;
constexpr uint8_t kVersion = 1;
constexpr uint8_t kAsks = 1;
constexpr uint8_t kAnswers = 2;
constexpr size_t kLeastPacket = 46;
constexpr size_t kProbe = 22;
constexpr Time kMinute = 60'000;
constexpr Time kAnswersWithin = 1000;
constexpr Time kPause = 5;        // between bursts
constexpr uint32_t kBurst = 128;  // VLANs
constexpr uint32_t kMtus[] = {1500, 1280};

ByteWriter frameOf(MacAddress to, MacAddress from, uint16_t vlan, Bytes body, size_t packet) {
    ByteWriter frame;
    frame.put(to, 6).put(from, 6);
    if (vlan != 0) frame.put(kTagType, 2).put(vlan, 2);
    frame.put(kLocalType, 2);
    const size_t header = frame.size();
    frame.put(body).pad(header + packet);
    return frame;
}

bool sameCheck(const policy::CheckT &one, const policy::CheckT &other) {
    const auto same = [](const policy::VlanRange &a, const policy::VlanRange &b) {
        return a.first() == b.first() && a.last() == b.last();
    };
    return one.minutes == other.minutes &&
           std::equal(one.vlans.begin(), one.vlans.end(), other.vlans.begin(), other.vlans.end(), same);
}

}  // namespace

void Engine::compileCheck(const policy::SwitchT &former, const std::vector<Port> &formerPorts) {
    check_.vlans.reset();
    if (policy_->check == nullptr) return;
    for (const policy::VlanRange &range : policy_->check->vlans)
        for (uint32_t vlan = range.first(); vlan <= range.last() && vlan < kVlans - 1; ++vlan)
            check_.vlans.set(vlan);
    const auto uplinksOf = [](const std::vector<Port> &ports) {
        return std::count_if(ports.begin(), ports.end(), [](const Port &port) { return port.uplink; });
    };
    const bool same = former.check != nullptr && sameCheck(*former.check, *policy_->check) &&
                      uplinksOf(formerPorts) == uplinksOf(ports_) &&
                      std::all_of(formerPorts.begin(), formerPorts.end(), [&](const Port &old) {
                          const Port *port = find(old.number);
                          return !old.uplink || (port != nullptr && port->carries == old.carries &&
                                                 port->up == old.up && port->policy->mtu == old.policy->mtu);
                      });
    if (same) return;
    beginCheck();
    for (const Port &port : ports_)
        if (port.uplink) tell(port.number, Topic::Check, {});
}

// What is found on a link that comes or goes is found again.
void Engine::beginCheck() {
    check_.begins = now_;
}

void Engine::sendProbe(Port &uplink, uint16_t vlan, uint32_t packet) {
    ByteWriter probe;
    probe.put(kMark, 4).put(kVersion, 1).put(kAsks, 1).put(switchAddress(), 6);
    probe.put(uplink.number, 4).put(check_.round, 4).put(packet, 2);
    sendOwn(uplink, frameOf(kProbeGroup, addressOf(uplink), vlan, probe.bytes(),
                            std::max<size_t>(packet, kLeastPacket))
                        .bytes());
}

// Sends the probes of some VLANs, and those of different lengths in a VLAN that was answered.
void Engine::sendProbes() {
    for (uint32_t sent = 0; check_.next < kVlans && sent < kBurst; ++check_.next) {
        if (!check_.vlans[check_.next]) continue;
        ++sent;
        for (Port &port : ports_)
            if (port.uplink && port.up && port.carries[check_.next])
                sendProbe(port, static_cast<uint16_t>(check_.next), 0);
    }
}

void Engine::sendLongProbes() {
    for (Port &port : ports_) {
        const auto found = check_.found.find(port.number);
        if (!port.uplink || !port.up || found == check_.found.end() || found->second.vlans.none()) continue;
        uint16_t vlan = 0;
        while (!found->second.vlans[vlan])
            ++vlan;
        sendProbe(port, vlan, port.policy->mtu);
        for (const uint32_t mtu : kMtus)
            if (mtu < port.policy->mtu) sendProbe(port, vlan, mtu);
    }
}

// Returns when the check goes on.
Time Engine::continueCheck() {
    if (policy_->check == nullptr) return kNever;
    if (now_ >= check_.begins) {
        check_.begins = now_ + std::max<Time>(policy_->check->minutes, 1) * kMinute;
        ++check_.round;
        check_.next = 0;
        check_.step = Check::Step::Vlans;
        check_.found.clear();
    }
    if (check_.step == Check::Step::Vlans) {
        sendProbes();
        if (check_.next < kVlans) return now_ + kPause;
        check_.step = Check::Step::Answers;
        check_.until = now_ + kAnswersWithin;
    }
    if (now_ < check_.until) return check_.until;
    if (check_.step == Check::Step::Answers) {
        sendLongProbes();
        check_.step = Check::Step::Lengths;
        check_.until = now_ + kAnswersWithin;
        return check_.until;
    }
    if (check_.step == Check::Step::Lengths) {
        check_.step = Check::Step::Done;
        for (const Port &port : ports_)
            if (port.uplink) tellFound(port);
    }
    return check_.begins;
}

// The result: a bit for each VLAN, least significant first, and the MTU as the kernel's number of two bytes.
void Engine::tellFound(const Port &uplink) {
    const Check::Found &found = check_.found[uplink.number];
    std::vector<uint8_t> bytes(kVlans / 8 + 2);
    for (size_t vlan = 0; vlan < kVlans; ++vlan)
        if (found.vlans[vlan]) bytes[vlan / 8] |= static_cast<uint8_t>(1 << vlan % 8);
    bytes[kVlans / 8] = static_cast<uint8_t>(found.mtu);
    bytes[kVlans / 8 + 1] = static_cast<uint8_t>(found.mtu >> 8);
    tell(uplink.number, Topic::Check, bytes);
}

// Returns whether the frame was a probe or an answer.
bool Engine::isProbe(Port &from, const Passage &passage) {
    if (!from.uplink || passage.type != kLocalType) return false;
    const Bytes bytes = passage.frame->bytes.subspan(passage.body + 2);
    if (bytes.size() < kProbe || read32(bytes.data()) != kMark || bytes[4] != kVersion) return false;
    const MacAddress asker = readMac(bytes.data() + 6);
    const uint32_t uplink = read32(bytes.data() + 12);
    const bool own = asker == switchAddress() && uplink == from.number;
    if (bytes[5] == kAsks && policy_->check != nullptr && !own) {
        ByteWriter answer;
        answer.put(bytes.first(5)).put(kAnswers, 1).put(bytes.subspan(6, kProbe - 6));
        sendOwn(from,
                frameOf(passage.source, addressOf(from), passage.vlan, answer.bytes(), kLeastPacket).bytes());
    } else if (bytes[5] == kAnswers && own && read32(bytes.data() + 16) == check_.round) {
        Check::Found &found = check_.found[from.number];
        const uint32_t length = read16(bytes.data() + 20);
        if (length == 0)
            found.vlans.set(passage.vlan);
        else
            found.mtu = std::max(found.mtu, length);
    }
    return true;
}

}  // namespace qvs::datapath
