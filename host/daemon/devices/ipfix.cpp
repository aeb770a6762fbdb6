// SPDX-License-Identifier: Apache-2.0
// /dev/ipfix: statistics of flow sampling.
//
// A request contains the portset name at 0 (128 bytes), or the switch identifier at 0 and the port identifier
// at 128 (48 bytes).
//
// Record in layouts/emulated.json: flow-stats.
#include <set>

#include "daemon/devices/device_request.h"
#include "daemon/devices/network_counters.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kRequestSize = 176;
constexpr size_t kStats = 192;
constexpr size_t kCountersAt = 8;

struct Sampling {
    uint32_t ports = 0;
    std::set<std::string_view> collectors;
    std::vector<const Port *> exporting;  // ports whose flows the data path reports
};

// Adds a port if it is sampled. Its record contains the number of collectors at 13 and the collectors, of 20
// bytes each, at 24.
void addSampling(const Model &model, const Port &port, Sampling *sampling) {
    constexpr size_t kCountAt = 13;
    constexpr size_t kCollectorsAt = 24;
    constexpr size_t kCollector = 20;
    constexpr size_t kRecord = 184;
    const Property *property = port.properties.find("com.quillon.net.ipfix.port");
    if (property == nullptr || property->value.size() < kRecord) return;
    ++sampling->ports;
    if (hasSlot(model, ipfixSlot(port.number))) sampling->exporting.push_back(&port);
    const std::string_view record = property->value;
    const auto count = u8At(record, kCountAt);
    for (size_t at = kCollectorsAt, i = 0; i < count && at < kRecord; ++i, at += kCollector)
        sampling->collectors.insert(record.substr(at, kCollector));
}

// Returns statistics: those of the data path, or made ones. Without a sampled port, all counters are 0.
Result statistics(const Call &call, const std::string &object, const Sampling &sampling) {
    Record stats(kStats);
    stats.put(0, sampling.ports).put(4, static_cast<uint32_t>(sampling.collectors.size()));
    if (call.model.facts.memory != nullptr) {
        for (uint32_t value = 0; value < datapath::kExportValues; ++value) {
            uint64_t sum = 0;
            for (const Port *port : sampling.exporting)
                sum += slotValue(call.model, ipfixSlot(port->number), value);
            stats.put(kCountersAt + value * sizeof sum, sum);
        }
    } else if (sampling.ports != 0) {
        stats.counters(kCountersAt, call.model.counters.read(object));
    }
    return {0, stats.take()};
}

Result getSwitchStats(const Call &call, const Portset &portset) {
    Sampling sampling;
    for (const Port *port : portsOf(portset))
        addSampling(call.model, *port, &sampling);
    return statistics(call, "ipfix " + portset.name, sampling);
}

Result getPortStats(const Call &call, const Port &port) {
    Sampling sampling;
    addSampling(call.model, port, &sampling);
    return statistics(call, "ipfix port " + std::to_string(port.number), sampling);
}

constexpr Command kCommands[] = {
    {4097, kRequestSize, "GetIpfixStats", on<requestedPortset, getSwitchStats>},
    {4098, kRequestSize, "GetIpfixGranularStats", on<requestedDvPort<128, 128>, getPortStats>},
};

}  // namespace

constexpr DevicePart kIpfix = {.commands = kCommands};

}  // namespace qvs::kernel
