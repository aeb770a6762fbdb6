// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: MAC learning and layer-2 security.
//
// A request about a switch contains its portset name. A request about a distributed port contains the
// identifiers of the switch and the port. The request that sets the properties of the host contains the
// ageing time (u64 seconds) at 176 and the limit (u16) at 184.
//
// Records in layouts/emulated.json: port-learning, learning-stats, learning-info,
// learning-properties, port-security.
#include <algorithm>

#include <fmt/format.h>

#include "daemon/devices/device_request.h"
#include "daemon/devices/mac_table.h"
#include "daemon/devices/network_counters.h"

namespace qvs::kernel {

namespace {

constexpr size_t kAgingAt = 176;
constexpr size_t kLimitAt = 184;

constexpr size_t kPortLearning = 14;
constexpr size_t kLearningStats = 52;
constexpr size_t kLearningInfo = 88;
constexpr size_t kSecurity = 8;
constexpr size_t kProps = 10;

// --- learning ---

uint32_t limitBehind(const Model &model, const Port &port) {
    return macLimitOf(model, port).value_or(macLimitOf(*port.owner));
}

Record statsOf(const Call &call, const MacTable &table, const Port &port) {
    Record record(kLearningStats);
    record.put(0, port.number).put(4, table.countBehind(port).all).put(8, limitBehind(call.model, port));
    const std::string slot = portSlot(port.number);
    if (hasSlot(call.model, slot)) {
        const auto value = [&](uint32_t number) { return slotValue(call.model, slot, number); };
        return putCounters(record, 12,
                           {value(datapath::kLearnt), value(datapath::kExpired), value(datapath::kMoved),
                            value(dropValue(datapath::Drop::LearningLimit)), value(datapath::kFlooded)});
    }
    return record.counters(12, call.model.counters.read(fmt::format("mac learning {}", port.number)));
}

Result getPortMacLearningStats(const Call &call, const Port &port) {
    return {0, statsOf(call, MacTable(call.model), port).take()};
}

Result getSwitchMacLearningStats(const Call &call, const Portset &portset) {
    const MacTable table(call.model);
    return countedList(call, 0, kLearningStats, portsOf(portset),
                       [&](const Port *port) { return statsOf(call, table, *port); });
}

Result getMacLearningAllPorts(const Call &call, const Portset &portset) {
    const MacTable table(call.model);
    return countedList(call, 0, kPortLearning, portsOf(portset), [&](const Port *port) {
        const PortLearning policy = portLearning(*port).value_or(PortLearning{});
        const int flags = (policy.flooding ? 1 : 0) | (policy.dropping ? 2 : 0);
        Record record(kPortLearning);
        record.put(0, port->number).put(4, limitBehind(call.model, *port));
        return record.put(8, table.countBehind(*port).learnt)
            .put(12, static_cast<uint8_t>(policy.learning))
            .put(13, static_cast<uint8_t>(flags));
    });
}

Result getSwitchMacLearningInfo(const Call &call, const Portset &portset) {
    Record info(kLearningInfo);
    const Switch *sw = portset.owner;
    if (sw == nullptr) return {0, info.take()};
    const MacTable::Count count = MacTable(call.model).countOn(*sw);
    const auto ports = portsOf(portset);
    const auto learning = std::count_if(ports.begin(), ports.end(), [](const Port *port) {
        return portLearning(*port).value_or(PortLearning{}).learning;
    });
    info.put(0, agingOf(call.model, *sw)).put(8, macLimitOf(*sw)).put(12, count.all);
    info.put(16, count.learnt).put(20, count.all - count.learnt);
    info.put(24, static_cast<uint32_t>(learning)).put(28, uint32_t{learningFlags(*sw)});
    const std::string slot = switchSlot(portset.number);
    if (hasSlot(call.model, slot)) {
        const auto sum = [&](uint32_t number) { return sumOf(call.model, *sw, Which::AllPorts, {number}); };
        putCounters(info, 32,
                    {sum(datapath::kLearnt), sum(datapath::kExpired), sum(datapath::kMoved),
                     sum(dropValue(datapath::Drop::LearningLimit)), sum(datapath::kFlooded),
                     slotValue(call.model, slot, datapath::kLookups),
                     slotValue(call.model, slot, datapath::kMisses)});
        return {0, info.take()};
    }
    return {0, info.counters(32, call.model.counters.read("mac learning " + sw->id)).take()};
}

Result getGlobalMacLearningProps(const Call &call) {
    const LearningProps props = learningProps(call.model);
    return {0, Record(kProps).put(0, props.aging).put(8, props.limit).take()};
}

Result setGlobalMacLearningProps(const Call &call) {
    setLearningProps(call.model, {u64At(call.input, kAgingAt), u16At(call.input, kLimitAt)});
    return {};
}

// --- layer-2 security ---

// Returns what is denied to each port. Without a stored record, promiscuous mode is denied.
Result getL2Security(const Call &call, const Portset &portset) {
    constexpr uint32_t kDenyPromiscuous = 1;
    return countedList(call, 0, kSecurity, portsOf(portset), [](const Port *port) {
        const Property *stored = port->properties.find("com.quillon.vswitch.port.security");
        const uint32_t denied = stored == nullptr ? kDenyPromiscuous : u32At(stored->value, 0);
        return Record(kSecurity).put(0, port->number).put(4, denied);
    });
}

constexpr uint32_t kRequest = SwitchRequest::kSize;
constexpr Command kCommands[] = {
    {0x101c, kRequest, "GetPortMACLearningStats", on<requestedDvPort<>, getPortMacLearningStats>},
    {0x101d, kRequest, "GetGlobalMACLearningProps", getGlobalMacLearningProps},
    {0x101e, kRequest, "GetSwitchMACLearningInfo", on<requestedPortset, getSwitchMacLearningInfo>},
    {0x101f, kRequest, "GetMACLearningAllPorts", on<requestedPortset, getMacLearningAllPorts>},
    {0x1020, kRequest, "GetSwitchMACLearningStats", on<requestedPortset, getSwitchMacLearningStats>},
    {0x1021, kRequest, "GetL2Security", on<requestedPortset, getL2Security>},
    {0x2005, kRequest, "SetGlobalMACLearningProps", setGlobalMacLearningProps},
};

}  // namespace

constexpr DevicePart kVswitchLearning = {.commands = kCommands};

}  // namespace qvs::kernel
