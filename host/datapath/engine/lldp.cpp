// SPDX-License-Identifier: Apache-2.0
// LLDP (IEEE 802.1AB): what the switch tells the network behind its uplinks, and what it hears from there.
#include <algorithm>

#include "datapath/byte_writer.h"
#include "datapath/engine/engine.h"

namespace qvs::datapath {
namespace {

constexpr uint16_t kLldpType = 0x88cc;
constexpr MacAddress kNearestBridge = 0x0180c200000e;
constexpr Time kEvery = 30'000;
constexpr uint16_t kLifetime = 120;  // seconds
constexpr size_t kLongestText = 255;

enum Part : uint8_t { End, Chassis, PortId, Lifetime, PortText, SystemName, SystemText, Capabilities };
constexpr uint8_t kMacSubtype = 4;
constexpr uint8_t kNameSubtype = 5;
constexpr uint16_t kBridge = 4;

void putHead(ByteWriter &frame, Part part, size_t length) {
    frame.put(static_cast<uint64_t>(part) << 9 | length, 2);
}

void putText(ByteWriter &frame, Part part, std::string_view text) {
    if (text.empty()) return;
    text = text.substr(0, kLongestText);
    putHead(frame, part, text.size());
    frame.put(text);
}

// Finds the lifetime of a neighbour. Returns false unless the first three parts are those that must be there,
// and all parts fit.
bool readLifetime(Bytes parts, uint16_t *lifetime) {
    constexpr Part kFirst[] = {Chassis, PortId, Lifetime};
    for (size_t number = 0; parts.size() >= 2; ++number) {
        const uint16_t head = read16(parts.data());
        const size_t length = head & 0x1ff;
        const auto part = static_cast<uint8_t>(head >> 9);
        if (part == End && number >= std::size(kFirst)) return true;
        if (parts.size() < 2 + length) return false;
        if (number < std::size(kFirst) && (part != kFirst[number] || length < 2)) return false;
        if (number == 2) *lifetime = read16(parts.data() + 2);
        parts = parts.subspan(2 + length);
    }
    return false;
}

}  // namespace

void Engine::sendLldp(Port &uplink, uint16_t lifetime) {
    const policy::PortT &policy = *uplink.policy;
    const std::string_view name =
        std::string_view(policy.client.empty() ? policy.id : policy.client).substr(0, kLongestText);
    ByteWriter frame;
    frame.put(kNearestBridge, 6).put(addressOf(uplink), 6);
    frame.put(kLldpType, 2);
    putHead(frame, Chassis, 7);
    frame.put(kMacSubtype, 1).put(switchAddress(), 6);
    putHead(frame, PortId, 1 + name.size());
    frame.put(kNameSubtype, 1).put(name);
    putHead(frame, Lifetime, 2);
    frame.put(lifetime, 2);
    if (lifetime != 0) {
        putText(frame, PortText, policy.id);
        putText(frame, SystemName, policy_->systemName);
        putText(frame, SystemText, "switch " + policy_->name);
        putHead(frame, Capabilities, 4);
        frame.put(kBridge, 2).put(kBridge, 2);
    }
    putHead(frame, End, 0);
    sendOwn(uplink, frame.pad(60).bytes());
}

// A switch that no longer advertises says so. One that no longer listens knows nobody.
void Engine::compileLldp(const policy::SwitchT &former) {
    const bool advertised = former.discovery != nullptr && former.discovery->advertise;
    const bool advertises = policy_->discovery != nullptr && policy_->discovery->advertise;
    for (Port &port : ports_) {
        if (!port.uplink) continue;
        if (advertised && !advertises && port.up) sendLldp(port, 0);
        if (!advertises) port.lldpDue = 0;
    }
    const bool listens = policy_->discovery != nullptr && policy_->discovery->listen;
    for (auto each = neighbours_.begin(); each != neighbours_.end();) {
        const bool stays = listens && find(each->first) != nullptr;
        if (!stays) tell(each->first, Topic::Neighbour, {});
        each = stays ? std::next(each) : neighbours_.erase(each);
    }
}

// Returns when the next frame or the end of a neighbour is due.
Time Engine::continueLldp() {
    Time next = kNever;
    for (auto each = neighbours_.begin(); each != neighbours_.end();) {
        const Port *port = find(each->first);
        if (now_ < each->second && port != nullptr && port->up) {
            next = std::min(next, (each++)->second);
            continue;
        }
        tell(each->first, Topic::Neighbour, {});
        each = neighbours_.erase(each);
    }
    if (policy_->discovery == nullptr || !policy_->discovery->advertise) return next;
    for (Port &port : ports_) {
        if (!port.uplink) continue;
        if (!port.up) {
            port.lldpDue = 0;
            continue;
        }
        if (now_ >= port.lldpDue) {
            port.lldpDue = now_ + kEvery;
            sendLldp(port, kLifetime);
        }
        next = std::min(next, port.lldpDue);
    }
    return next;
}

void Engine::receiveLldp(const Port &from, const Passage &passage) {
    constexpr Time kSecond = 1000;
    if (passage.type != kLldpType || policy_->discovery == nullptr || !policy_->discovery->listen) return;
    const Bytes parts = passage.frame->bytes.subspan(passage.body + 2);
    uint16_t lifetime = 0;
    if (!readLifetime(parts, &lifetime)) return;
    if (lifetime == 0) {
        neighbours_.erase(from.number);
        tell(from.number, Topic::Neighbour, {});
        return;
    }
    neighbours_[from.number] = now_ + lifetime * kSecond;
    tell(from.number, Topic::Neighbour, parts);
}

}  // namespace qvs::datapath
