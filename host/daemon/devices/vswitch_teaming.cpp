// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: statistics of teaming, and the logical-switch teaming policies.
//
// A request contains the portset name at 0 (128 bytes) or a port number at 128. The policies are those that
// are stored for the switch and its ports.
//
// Records in layouts/emulated.json: rarp-stats, teaming-stats.
#include <algorithm>

#include "daemon/devices/device_request.h"
#include "daemon/devices/network_counters.h"

namespace qvs::kernel {

namespace {

constexpr size_t kRarpStats = 16;
constexpr size_t kServicePortStats = 48;
constexpr size_t kPolicyName = 136;
constexpr size_t kPolicyEntry = 2748;

Record rarpOf(const Model &model, const Portset &portset) {
    const auto value = [&](uint32_t number) { return slotValue(model, switchSlot(portset.number), number); };
    Record record(kRarpStats);
    return putCounters(record, 0, {value(datapath::kReverseArpSent), value(datapath::kReverseArpFailed)});
}

// Frames that leave the switch are "out" of it by an uplink.
Record teamingOf(const Model &model, const Portset &portset) {
    using namespace datapath;
    const auto value = [&](uint32_t number) { return slotValue(model, switchSlot(portset.number), number); };
    Record record(kServicePortStats);
    if (portset.owner == nullptr) return record;
    const auto sum = [&](Which which, std::initializer_list<uint32_t> values) {
        return sumOf(model, *portset.owner, which, values);
    };
    return putCounters(record, 0,
                       {value(kFailovers), value(kFailbacks),
                        sum(Which::Uplinks, {kPacketsOutUnicast, kPacketsOutMulticast, kPacketsOutBroadcast}),
                        sum(Which::Uplinks, {kBytesOutUnicast, kBytesOutMulticast, kBytesOutBroadcast}),
                        sum(Which::Uplinks, {kPacketsInUnicast, kPacketsInMulticast, kPacketsInBroadcast}),
                        sum(Which::AllPorts, {dropValue(Drop::NoUplink)})});
}

template <const auto &kind, size_t size, auto count>
Result statistics(const Call &call, const Portset &portset) {
    if (hasSlot(call.model, switchSlot(portset.number))) return {0, count(call.model, portset).take()};
    return {0, Record(size).counters(0, call.model.counters.read(kind + portset.name)).take()};
}

constexpr char kRarp[] = "rarp ";
constexpr char kServicePort[] = "service-port teaming ";

// The name is empty if the port has no policy.
Result getPortPolicyName(const Call &, Port &port) {
    const std::string_view name = port.properties.text("com.quillon.vswitch.port.logicalswitch.teaming");
    return {0, Record(kPolicyName).text(0, kPolicyName, name).take()};
}

// Returns a u32 count and the entries. A client that has room only for the count gets the number of all
// entries. Other clients get as many entries as fit, and their number.
Result getPolicyTable(const Call &call, const Portset &portset) {
    constexpr size_t kCount = sizeof(uint32_t);
    const Property *stored = nullptr;
    if (portset.owner != nullptr)
        stored = portset.owner->global.find("com.quillon.vswitch.logicalswitch.teaming");
    std::string_view entries;
    if (stored != nullptr && stored->value.size() > kCount) {
        entries = std::string_view(stored->value).substr(kCount);
        // A client stored the count, which can exceed the number of entries.
        const size_t count = std::min<size_t>(u32At(stored->value, 0), entries.size() / kPolicyEntry);
        entries = entries.substr(0, count * kPolicyEntry);
    }
    const bool countOnly = call.outLength <= kCount;
    if (!countOnly) entries = entries.substr(0, (call.outLength - kCount) / kPolicyEntry * kPolicyEntry);
    Result result;
    result.output = Record(kCount).put(0, static_cast<uint32_t>(entries.size() / kPolicyEntry)).take();
    if (!countOnly) result.output += entries;
    return result;
}

constexpr Command kCommands[] = {
    {0x1001, SwitchRequest::kSize, "GetRARPStats",
     on<requestedPortset, statistics<kRarp, kRarpStats, rarpOf>>},
    {0x1002, SwitchRequest::kSize, "GetServicePortTeamingStats",
     on<requestedPortset, statistics<kServicePort, kServicePortStats, teamingOf>>},
    {0x1024, SwitchRequest::kSize, "GetPortLSTeamingPolicyName", on<requestedPortNumber, getPortPolicyName>},
    {0x1025, SwitchRequest::kSize, "GetLSTeamingPolicyTable", on<requestedPortset, getPolicyTable>},
};

}  // namespace

constexpr DevicePart kVswitchTeaming = {.commands = kCommands};

}  // namespace qvs::kernel
