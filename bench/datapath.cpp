// SPDX-License-Identifier: Apache-2.0
// Frames a second through one switch of the data path: unicast between two ports of 2 and of 1,000, with and
// without a tag that changes, and broadcasts. Sending is a call that does nothing.
#include <benchmark/benchmark.h>

#include <array>

#include "datapath/switch.h"
#include "policy_generated.h"

namespace {

using qvs::datapath::Frame;
using qvs::datapath::Switch;

constexpr size_t kShortest = 64;

std::array<uint8_t, 6> macOf(uint32_t port) {
    return {2, 0, 0, 0, static_cast<uint8_t>(port >> 8), static_cast<uint8_t>(port)};
}

std::unique_ptr<qvs::policy::SwitchT> policies(uint32_t ports, bool trunk) {
    auto policy = std::make_unique<qvs::policy::SwitchT>();
    for (uint32_t number = 1; number <= ports; ++number) {
        auto port = std::make_unique<qvs::policy::PortT>();
        port->number = port->slot = number;
        port->link = true;
        port->mac = std::make_unique<qvs::policy::Mac>(macOf(number));
        port->vlan = std::make_unique<qvs::policy::VlanT>();
        port->vlan->id = 10;
        if (trunk && number == 1) {
            port->vlan->trunk = true;
            port->vlan->ranges = {qvs::policy::VlanRange(1, 4094)};
        }
        policy->ports.push_back(std::move(port));
    }
    return policy;
}

std::array<uint8_t, kShortest> frameTo(std::array<uint8_t, 6> destination, bool tagged) {
    std::array<uint8_t, kShortest> bytes{};
    std::copy(destination.begin(), destination.end(), bytes.begin());
    const auto source = macOf(1);
    std::copy(source.begin(), source.end(), bytes.begin() + 6);
    const std::array<uint8_t, 6> head = {0x81, 0, 0, 10, 8, 0};
    std::copy(head.begin() + (tagged ? 0 : 4), head.end(), bytes.begin() + 12);
    return bytes;
}

void datapath(benchmark::State &state, bool trunk, std::array<uint8_t, 6> destination) {
    const auto slots = std::make_unique<qvs::datapath::Slot[]>(2048);
    uint64_t sent = 0;
    Switch engine({[&sent](uint32_t, const Frame &) { return ++sent != 0; }, {}, {}, slots.get()});
    engine.configure(policies(static_cast<uint32_t>(state.range(0)), trunk), 0);
    const auto bytes = frameTo(destination, trunk);
    for (auto _ : state)
        engine.receive(1, {bytes}, 1);
    if (sent == 0) state.SkipWithError("no frame arrived");
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.counters["deliveries"] = benchmark::Counter(static_cast<double>(sent), benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK_CAPTURE(datapath, unicast, false, macOf(2))->Arg(2)->Arg(1000);
BENCHMARK_CAPTURE(datapath, tag, true, macOf(2))->Arg(2)->Arg(1000);
BENCHMARK_CAPTURE(datapath, broadcast, false, {0xff, 0xff, 0xff, 0xff, 0xff, 0xff})->Arg(2)->Arg(1000);
BENCHMARK_MAIN();
