// SPDX-License-Identifier: Apache-2.0
// Mirrored frames to an IP address: GRE, and how the next hop is found.
#include <algorithm>

#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr Time kProbeUnknown = 1000;
constexpr Time kProbeKnown = 30000;
constexpr uint8_t kGre = 47;
constexpr uint8_t kHops = 64;
constexpr uint16_t kMirrorInGre = 0x88be;
constexpr size_t kGreHeader = 8 + 8;  // GRE with a sequence number, and the header of the session
constexpr uint8_t kIcmp6 = 58;
constexpr uint8_t kSolicitation = 135;
constexpr uint8_t kAdvertisement = 136;

void append16(std::vector<uint8_t> &bytes, uint32_t value) {
    bytes.resize(bytes.size() + 2);
    write16(bytes.data() + bytes.size() - 2, value);
}

void append32(std::vector<uint8_t> &bytes, uint32_t value) {
    append16(bytes, value >> 16);
    append16(bytes, value);
}

void append(std::vector<uint8_t> &bytes, Bytes more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void appendMac(std::vector<uint8_t> &bytes, MacAddress address) {
    bytes.resize(bytes.size() + 6);
    writeMac(bytes.data() + bytes.size() - 6, address);
}

// The link-local address of IPv4 or IPv6 that belongs to the address of the switch.
std::vector<uint8_t> ownAddress(MacAddress mac, size_t length) {
    if (length == 4)
        return {169, 254, static_cast<uint8_t>(1 + (mac >> 8 & 0xff) % 254), static_cast<uint8_t>(mac)};
    std::vector<uint8_t> address = {0xfe, 0x80, 0, 0, 0, 0, 0, 0};
    append16(address, static_cast<uint32_t>(mac >> 32) ^ 0x0200);
    append32(address, static_cast<uint32_t>((mac >> 16 & 0xff00) | 0xff) << 16 | 0xfe00 |
                          static_cast<uint32_t>(mac >> 16 & 0xff));
    append16(address, static_cast<uint32_t>(mac & 0xffff));
    return address;
}

void appendEther(std::vector<uint8_t> &bytes, MacAddress to, MacAddress from,
                 const policy::MirrorSessionT &policy, uint16_t type) {
    appendMac(bytes, to);
    appendMac(bytes, from);
    if (policy.encapsulated) {
        append16(bytes, kTagType);
        append16(bytes, policy.encapVlan & kVlanMask);
    }
    append16(bytes, type);
}

void appendIp(std::vector<uint8_t> &bytes, Bytes from, Bytes to, uint8_t protocol, uint8_t hops,
              size_t payload) {
    if (to.size() == 16) {
        append32(bytes, 0x60000000);
        append16(bytes, static_cast<uint32_t>(payload));
        append16(bytes, static_cast<uint32_t>(protocol << 8 | hops));
    } else {
        const size_t begin = bytes.size();
        append32(bytes, 0x45000000 | static_cast<uint32_t>(payload + 20));
        append32(bytes, 0);
        append16(bytes, static_cast<uint32_t>(hops << 8 | protocol));
        const uint64_t sum = addToSum(addToSum(addToSum(0, Bytes(bytes).subspan(begin)), from), to);
        append16(bytes, foldSum(sum));
    }
    append(bytes, from);
    append(bytes, to);
}

std::vector<uint8_t> addressRequest(MacAddress mac, Bytes target, const policy::MirrorSessionT &policy) {
    std::vector<uint8_t> bytes;
    appendEther(bytes, kBroadcast, mac, policy, kArpType);
    append32(bytes, 0x00010800);
    append32(bytes, 0x06040001);
    appendMac(bytes, mac);
    append32(bytes, 0);  // a probe claims no address
    appendMac(bytes, 0);
    append(bytes, target);
    return bytes;
}

std::vector<uint8_t> neighbourSolicitation(MacAddress mac, Bytes target,
                                           const policy::MirrorSessionT &policy) {
    std::vector<uint8_t> group = {0xff, 2, 0, 0, 0,    0,          0,          0,
                                  0,    0, 0, 1, 0xff, target[13], target[14], target[15]};
    const std::vector<uint8_t> own = ownAddress(mac, 16);
    std::vector<uint8_t> message;
    append32(message, static_cast<uint32_t>(kSolicitation) << 24);
    append32(message, 0);
    append(message, target);
    append16(message, 0x0101);  // link-layer address of the sender
    appendMac(message, mac);
    const uint64_t addresses = addToSum(addToSum(0, own), group);
    write16(message.data() + 2, foldSum(addToSum(addresses + kIcmp6 + message.size(), message)));
    std::vector<uint8_t> bytes;
    appendEther(bytes, 0x333300000000 | read32(group.data() + 12), mac, policy, kIpv6Type);
    appendIp(bytes, own, group, kIcmp6, 255, message.size());
    append(bytes, message);
    return bytes;
}

// The IP address whose hardware address a frame reveals, if the frame answers a probe.
Bytes answeredAddress(const Passage &passage, MacAddress &hardware) {
    const Bytes bytes = passage.frame->bytes;
    const size_t packet = passage.body + 2;
    if (passage.type == kArpType && bytes.size() >= packet + 28 && read16(bytes.data() + packet + 6) == 2) {
        hardware = readMac(bytes.data() + packet + 8);
        return bytes.subspan(packet + 14, 4);
    }
    IpHeader ip;
    if (passage.type != kIpv6Type || !readIp(bytes, packet, passage.type, ip) || ip.protocol != kIcmp6)
        return {};
    if (ip.end < ip.payload + 24 || bytes[ip.payload] != kAdvertisement) return {};
    const size_t option = ip.payload + 24;
    const bool hasOption = ip.end >= option + 8 && bytes[option] == 2 && bytes[option + 1] == 1;
    hardware = hasOption ? readMac(bytes.data() + option + 2) : passage.source;
    return bytes.subspan(ip.payload + 8, 16);
}

}  // namespace

// Without an address, one that is different for each switch of the host.
MacAddress Engine::switchAddress() const {
    return policy_->mac != nullptr ? macOf(*policy_->mac) : 0x021000000000 | policy_->number;
}

void Engine::encapsulate(MirrorSession &session, MirrorTarget &target, Bytes frame, const Passage &passage,
                         bool cut) {
    const uint32_t uplink = teams_.front().candidates.empty() ? kNone : teams_.front().candidates.front();
    if (uplink == kNone) {
        add(*session.slot, kMirrorNoUplink);
        return;
    }
    const policy::MirrorSessionT &policy = *session.policy;
    const MacAddress mac = switchAddress();
    const Bytes address = Bytes(target.address).first(target.length);
    const bool isVersion4 = target.length == 4;
    if (now_ >= target.probeAt) {
        target.probeAt = now_ + (target.nextHop == kBroadcast ? kProbeUnknown : kProbeKnown);
        const auto bytes =
            isVersion4 ? addressRequest(mac, address, policy) : neighbourSolicitation(mac, address, policy);
        sendOwn(ports_[uplink], bytes);
    }
    std::vector<uint8_t> bytes;
    appendEther(bytes, target.nextHop, mac, policy, isVersion4 ? kIpv4Type : kIpv6Type);
    appendIp(bytes, ownAddress(mac, target.length), address, kGre, kHops, kGreHeader + frame.size());
    append32(bytes, 0x10000000 | kMirrorInGre);
    append32(bytes, target.sequence++);
    // Version 1; VLAN; priority; whether the tag is in the header; whether the frame is cut; number of the
    // session.
    const uint32_t vlan = policy.keepVlan ? passage.vlan : 0;
    append16(bytes, 0x1000 | vlan);
    append16(bytes, (vlan != 0 ? passage.priority & 0xe000u : 0u) | (vlan != 0 ? 0x1800u : 0u) |
                        (cut ? 0x0400u : 0u) | ((session.number + 1) & 0x3ff));
    append32(bytes, 0);
    append(bytes, frame);
    sendCopy(session, ports_[uplink], {bytes});
}

void Engine::sendOwn(Port &uplink, Bytes bytes) {
    if (surroundings_.send(uplink.number, {bytes}))
        countOut(uplink, readMac(bytes.data()), bytes.size());
    else
        drop(uplink, Drop::Busy, false);
}

// Returns whether the frame was for the switch itself.
bool Engine::answersProbe(const Passage &passage) {
    if (passage.destination != switchAddress() || !ports_[passage.from].uplink) return false;
    MacAddress hardware = 0;
    const Bytes answered = answeredAddress(passage, hardware);
    for (MirrorSession &session : sessions_)
        for (MirrorTarget &target : session.targets)
            if (answered.size() == target.length &&
                std::equal(answered.begin(), answered.end(), target.address.begin()))
                target.nextHop = hardware;
    return true;
}

}  // namespace qvs::datapath
