// SPDX-License-Identifier: Apache-2.0
// Random policies and frames: the engine sends the same frames as the model, and counts the same drops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "datapath/model.h"

namespace qvs::test {
namespace {

constexpr uint32_t kClients = 7;  // 1 to 7
constexpr uint32_t kUplinks[] = {8, 9};
constexpr int kFrames = 200;  // for each configuration
constexpr int kConfigurations = 600;

class Draw {
  public:
    explicit Draw(uint64_t seed) : random_(seed) {}
    bool once(uint32_t in) { return below(in) == 0; }
    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    template <typename T>
    T of(std::initializer_list<T> values) {
        return values.begin()[below(static_cast<uint32_t>(values.size()))];
    }

    std::unique_ptr<policy::SwitchT> policies();
    std::unique_ptr<policy::PortT> port(uint32_t number);
    Bytes frame(uint32_t port);
    uint64_t address() { return macOfName(of({'1', '2', '3', '4', '5', '6', '7', 'a', 'b', 'e'})); }

  private:
    std::unique_ptr<policy::VlanT> vlan();
    std::unique_ptr<policy::TeamingT> teaming();
    std::unique_ptr<policy::MirrorSessionT> mirror();
    std::vector<policy::Mac> groups();
    void learning(policy::PortT &port);
    uint16_t id() { return of<uint16_t>({0, 10, 11, 12, 20}); }

    std::mt19937_64 random_;
};

policy::Mac macOf(uint64_t value) {
    std::array<uint8_t, 6> bytes{};
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(value >> (40 - 8 * i));
    return policy::Mac(bytes);
}

std::unique_ptr<policy::VlanT> Draw::vlan() {
    auto policy = std::make_unique<policy::VlanT>();
    policy->id = id();
    policy->trunk = once(4);
    policy->inPrivateMap = !policy->trunk && once(2);
    policy->nested = once(6);
    if (once(4)) policy->priority = static_cast<int>(below(8));
    if (policy->trunk) policy->ranges = {policy::VlanRange(id(), 11), policy::VlanRange(12, 20)};
    return policy;
}

std::unique_ptr<policy::TeamingT> Draw::teaming() {
    using policy::Balance;
    auto policy = std::make_unique<policy::TeamingT>();
    policy->balance = of({Balance::Drop, Balance::SourceIp, Balance::SourceMac, Balance::SourcePort,
                          Balance::Explicit, Balance::Load});
    policy->active = of<std::vector<uint32_t>>({{8, 9}, {9, 8}, {8}, {9}});
    if (policy->active.size() == 1 && once(2)) policy->standby = {17 - policy->active[0]};
    policy->checkLink = !once(6);
    policy->rolling = once(3);
    return policy;
}

std::vector<policy::Mac> Draw::groups() {
    std::vector<policy::Mac> list;
    for (const char name : {'m', 'n', 'g'})
        if (once(2)) list.push_back(macOf(name == 'g' ? 0x0300000000ab : macOfName(name)));
    return list;
}

std::unique_ptr<policy::MirrorSessionT> Draw::mirror() {
    auto policy = std::make_unique<policy::MirrorSessionT>();
    policy->snapLength = of({-1, 0, 5, 20, 64});
    policy->sampling = below(4);
    policy->noInput = once(3);
    policy->noOutput = once(3);
    policy->keepVlan = once(2);
    policy->encapsulated = once(3);
    policy->encapVlan = 99;
    policy->destinations.push_back(std::make_unique<policy::MirrorDestinationT>());
    policy->destinations[0]->port = 1 + below(9);
    for (uint32_t port = 1; port <= 9; ++port) {
        if (once(3)) policy->sourcesIn.push_back(port);
        if (once(3)) policy->sourcesOut.push_back(port);
    }
    return policy;
}

void Draw::learning(policy::PortT &port) {
    port.learning = std::make_unique<policy::LearningT>();
    port.learning->enabled = !once(4);
    port.learning->flooding = once(3);
    port.learning->limit = below(4);
    port.learning->dropAtLimit = once(2);
}

std::unique_ptr<policy::PortT> Draw::port(uint32_t number) {
    auto policy = std::make_unique<policy::PortT>();
    policy->number = policy->slot = number;
    policy->uplink = number > kClients;
    policy->link = !once(20);
    policy->blocked = once(25);
    if (policy->uplink) {
        policy->mtu = of({1400u, 1500u});
        policy->vlan = std::make_unique<policy::VlanT>();
        policy->vlan->trunk = true;
        policy->vlan->ranges = {policy::VlanRange(once(5) ? 11 : 1, 4094)};
        return policy;
    }
    policy->mac = std::make_unique<policy::Mac>(macOf(macOfName(static_cast<char>('0' + number))));
    if (!once(3)) policy->vlan = vlan();
    if (once(2)) policy->security = std::make_unique<policy::SecurityT>(policy::SecurityT());
    if (policy->security) {
        policy->security->promiscuous = once(2);
        policy->security->macChange = once(2);
        policy->security->forgedTransmits = once(2);
    }
    if (once(3)) {
        policy->filter = std::make_unique<policy::ReceiveFilterT>();
        policy->filter->promiscuous = once(2);
        policy->filter->sink = once(3);
        policy->filter->allMulticast = once(4);
        policy->filter->multicast = once(2);
        policy->filter->addresses = groups();
    }
    if (once(2)) learning(*policy);
    if (once(4)) policy->teaming = teaming();
    policy->alwaysUplink = once(12);
    policy->hasMulticastList = once(4);
    policy->multicastList = groups();
    if (once(3)) {
        policy->groups.push_back(std::make_unique<policy::GroupT>());
        policy->groups[0]->address = of<std::vector<uint8_t>>({{239, 1, 1, 1}, {3, 0, 0, 0, 0, 0xab}});
    }
    if (!policy->groups.empty() && policy->groups[0]->address.size() == 4 && once(3)) {
        policy->groups[0]->sources.push_back(std::make_unique<policy::GroupSourceT>());
        policy->groups[0]->sources[0]->address = {10, 0, 0, static_cast<uint8_t>(1 + below(2))};
    }
    return policy;
}

std::unique_ptr<policy::SwitchT> Draw::policies() {
    auto policy = std::make_unique<policy::SwitchT>();
    policy->aging = below(3);
    if (once(4)) policy->macLimit = 2;
    policy->multicast = of({policy::Multicast::Legacy, policy::Multicast::Snooping});
    policy->hasMulticastList = once(4);
    policy->multicastList = groups();
    if (once(2)) {
        using policy::PrivateType;
        for (const auto &[secondary, type] : {std::pair<uint16_t, PrivateType>{10, PrivateType::Promiscuous},
                                              {11, PrivateType::Isolated},
                                              {12, PrivateType::Community}}) {
            policy->privateVlans.push_back(std::make_unique<policy::PrivateVlanT>());
            policy->privateVlans.back()->primary = 10;
            policy->privateVlans.back()->secondary = secondary;
            policy->privateVlans.back()->type = type;
        }
    }
    if (once(2)) {
        policy->teaming = teaming();
        policy->teaming->notify = false;
    }
    while (once(2))
        policy->mirrors.push_back(mirror());
    for (uint32_t number = 1; number <= kUplinks[1]; ++number)
        policy->ports.push_back(port(number));
    // Reverse ARP is not a rule of the model.
    if (!policy->teaming) policy->teaming = teaming();
    return policy;
}

Bytes Draw::frame(uint32_t port) {
    const char own = static_cast<char>('0' + port);
    const char source = port > kClients || once(3) ? of({'1', '2', 'a', 'b', 'c', 'e', 'f'}) : own;
    const char to = of({'1', '2', '3', '4', '5', '6', '7', 'a', 'b', 'e', '*', 'm', 'n', 's'});
    std::string text = {source, '>', to};
    for (uint32_t chance = port > kClients ? 1 : 2; once(chance + 1) || (chance == 1 && once(2)); chance += 3)
        text += "[" + (once(3) ? std::to_string(below(8)) + "." : "") + std::to_string(id()) + "]";
    text += "(" + std::to_string(of({46, 46, 46, 1399, 1400, 1401, 1500, 1501, 1504})) + ")";
    Bytes bytes = frameOf(text);
    if ((to == 'm' || to == 'n') && once(2)) {
        const size_t source4 = bytes.size() > 40 ? bytes.size() : 0;
        if (source4 != 0 && bytes[12] == 8) bytes[29] = static_cast<uint8_t>(1 + below(4));
    }
    if (once(8)) bytes[0] = 3, bytes[1] = bytes[2] = bytes[3] = bytes[4] = 0, bytes[5] = 0xab;
    if (once(40)) bytes.resize(below(20));
    return bytes;
}

// What the engine does that the model does not, as text.
std::string difference(Network &network, Model &model, uint32_t port, const Bytes &bytes, uint64_t now) {
    std::vector<Sent> engine = network.receive(port, bytes, now);
    std::vector<Sent> expected = model.receive(port, bytes, now);
    std::sort(engine.begin(), engine.end());
    std::sort(expected.begin(), expected.end());
    std::string text;
    const auto list = [&text](const std::vector<Sent> &sent) {
        for (const Sent &frame : sent)
            text += " " + std::to_string(frame.port) + "(" + std::to_string(frame.bytes.size()) + ")";
    };
    if (engine != expected) {
        text += "engine:";
        list(engine);
        text += "; model:";
        list(expected);
    }
    for (uint32_t number = 1; number <= kUplinks[1]; ++number)
        for (int reason = 0; reason <= 11; ++reason) {
            const uint64_t counted =
                network.value(number, datapath::kDropped + static_cast<uint32_t>(reason));
            const uint64_t wanted = model.drops[{number, reason}];
            if (counted != wanted)
                text += "; port " + std::to_string(number) + " reason " + std::to_string(reason) + ": " +
                        std::to_string(counted) + ", model: " + std::to_string(wanted);
        }
    return text;
}

void compare(uint64_t seed) {
    Draw draw(seed);
    const auto policies = draw.policies();
    Network network;
    network.configure(std::make_unique<policy::SwitchT>(*policies));
    Model model(*policies);
    uint64_t now = 0;
    for (int count = 0; count < kFrames; ++count) {
        now += draw.of({1u, 10u, 400u});
        if (draw.once(20)) {
            const uint32_t port = 1 + draw.below(9);
            const bool up = !draw.once(3);
            network.engine().setCarrier(port, up, now);
            model.setCarrier(port, up);
        }
        if (draw.once(30)) {
            const uint32_t port = 1 + draw.below(kClients);
            const uint64_t address = draw.once(2) ? 0 : draw.address();
            network.engine().setAddress(port, address, now);
            model.setAddress(port, address);
        }
        if (draw.once(10)) network.engine().tick(now);
        network.takeSent();
        const uint32_t port = 1 + draw.below(9);
        const Bytes bytes = draw.frame(port);
        const std::string text = difference(network, model, port, bytes, now);
        ASSERT_EQ(text, "") << "seed " << seed << ", frame " << count << " from port " << port << ", "
                            << bytes.size() << " bytes: " << hexOf(bytes).substr(0, 80);
    }
}

// A port that changes alone is what it is after the whole switch was configured again.
TEST(Random, changedPorts) {
    int alone = 0;
    for (uint64_t seed = 0; seed < 300; ++seed) {
        Draw draw(seed);
        const auto policies = draw.policies();
        // A whole configuration begins to count anew.
        for (const auto &session : policies->mirrors)
            session->sampling = 1;
        Network whole;
        Network single;
        for (Network *network : {&whole, &single})
            network->configure(std::make_unique<policy::SwitchT>(*policies));
        for (uint64_t now = 0; now < 100; ++now) {
            if (draw.once(10)) {
                const auto changed = draw.port(1 + draw.below(kClients));
                *policies->ports[changed->number - 1] = *changed;
                whole.configure(std::make_unique<policy::SwitchT>(*policies), now);
                if (single.engine().changePort(std::make_unique<policy::PortT>(*changed), now))
                    ++alone;
                else
                    single.configure(std::make_unique<policy::SwitchT>(*policies), now);
            }
            const uint32_t port = 1 + draw.below(9);
            const Bytes bytes = draw.frame(port);
            ASSERT_EQ(whole.receive(port, bytes, now), single.receive(port, bytes, now))
                << "seed " << seed << ", frame " << now << " from port " << port << ": " << hexOf(bytes);
        }
        for (uint32_t value = 0; value < datapath::kPortValues; ++value)
            for (uint32_t port = 1; port <= kUplinks[1]; ++port)
                ASSERT_EQ(whole.value(port, value), single.value(port, value)) << seed << " " << value;
    }
    EXPECT_GT(alone, 300);
}

// 120,000 frames, or QVS_RUNS times 200.
TEST(Random, policiesAndFrames) {
    const char *runs = std::getenv("QVS_RUNS");
    const int last = runs != nullptr ? std::atoi(runs) : kConfigurations;
    for (int seed = 0; seed < last && !HasFatalFailure(); ++seed)
        compare(static_cast<uint64_t>(seed));
}

}  // namespace
}  // namespace qvs::test
