// SPDX-License-Identifier: Apache-2.0
// Frames with any bytes and any offload through a switch with every policy. The input is a list of frames:
// the port, the offload, the length in two bytes, and the bytes.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "datapath/switch.h"
#include "policy_generated.h"

namespace {

using qvs::datapath::Frame;
using qvs::datapath::Offload;
using qvs::datapath::Switch;
namespace policy = qvs::policy;

constexpr size_t kLongestFrame = 65550;

std::unique_ptr<policy::PortT> portOf(uint32_t number) {
    auto port = std::make_unique<policy::PortT>();
    port->number = port->slot = number;
    port->link = true;
    port->uplink = number > 6;
    port->vlan = std::make_unique<policy::VlanT>();
    port->vlan->trunk = number > 4;
    port->vlan->nested = number == 3;
    port->vlan->id = number > 2 ? 0 : 11;
    port->vlan->inPrivateMap = number <= 2;
    if (port->vlan->trunk) port->vlan->ranges = {policy::VlanRange(0, 4095)};
    port->learning = std::make_unique<policy::LearningT>();
    port->learning->enabled = true;
    port->learning->limit = 100;
    return port;
}

std::unique_ptr<policy::MirrorSessionT> sessionOf(policy::MirrorType type, std::vector<uint8_t> address) {
    auto session = std::make_unique<policy::MirrorSessionT>();
    session->type = type;
    session->snapLength = address.empty() ? 15 : -1;
    session->keepVlan = session->encapsulated = true;
    session->sourcesIn = {1, 3, 5, 8};
    session->sourcesOut = {2, 4, 7};
    session->destinations.push_back(std::make_unique<policy::MirrorDestinationT>());
    session->destinations[0]->port = address.empty() ? 6 : 0;
    session->destinations[0]->address = std::move(address);
    return session;
}

std::unique_ptr<policy::SwitchT> policies() {
    auto policy = std::make_unique<policy::SwitchT>();
    policy->mtu = 9000;
    policy->multicast = policy::Multicast::Snooping;
    policy->teaming = std::make_unique<policy::TeamingT>();
    policy->teaming->balance = policy::Balance::SourceIp;
    policy->teaming->active = {7, 8};
    policy->privateVlans.push_back(std::make_unique<policy::PrivateVlanT>());
    policy->privateVlans[0]->primary = 10;
    policy->privateVlans[0]->secondary = 11;
    policy->privateVlans[0]->type = policy::PrivateType::Community;
    for (uint32_t number = 1; number <= 8; ++number)
        policy->ports.push_back(portOf(number));
    policy->mirrors.push_back(sessionOf(policy::MirrorType::Port, {}));
    policy->mirrors.push_back(sessionOf(policy::MirrorType::EncapsulatedSource, {192, 0, 2, 1}));
    policy->mirrors.push_back(sessionOf(policy::MirrorType::EncapsulatedSource,
                                        {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    return policy;
}

// What a receiver does that takes complete frames alone.
bool take(uint32_t, const Frame &frame) {
    if (frame.bytes.size() < qvs::datapath::kHeaderSize) std::abort();
    size_t total = 0;
    (void)complete(frame, 1500, [&total](std::span<const uint8_t> part) { total += part.back(); });
    return total % 7 != 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    constexpr size_t kHead = 1 + sizeof(Offload) + 2;
    Switch engine({take, {}, {}, nullptr});
    engine.configure(policies(), 0);
    for (uint64_t now = 1000; size >= kHead; now += 500) {
        Offload offload;
        std::memcpy(&offload, data + 1, sizeof offload);
        const size_t wanted = static_cast<size_t>(data[kHead - 2] << 8 | data[kHead - 1]);
        const size_t length = std::min({wanted, size - kHead, kLongestFrame});
        // A block of its own, so that every byte that is read beyond shows.
        const std::vector<uint8_t> bytes(data + kHead, data + kHead + length);
        engine.receive(1 + data[0] % 8, {bytes, offload}, now);
        if (data[0] > 0xf0) engine.setCarrier(7, data[0] % 2 == 0, now);
        if (engine.tick(now) <= now) std::abort();
        data += kHead + length;
        size -= kHead + length;
    }
    return 0;
}
