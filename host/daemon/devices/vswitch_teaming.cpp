// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: what teaming did, and the logical-switch teaming policies that are in force.
//
// Requests carry the portset name at 0 (128 bytes) or a port number at 128. The policies are what the switch
// and its ports have stored.
//
// Records in layouts/emulated.json: rarp-stats, teaming-stats.
#include <algorithm>
#include <cerrno>

#include "daemon/devices/device_request.h"

namespace qvs::kernel {

namespace {

constexpr size_t kRarpStats = 16;
constexpr size_t kServicePortStats = 48;
constexpr size_t kPolicyName = 136;
constexpr size_t kPolicyEntry = 2748;

template <const auto &kind, size_t size>
Result statistics(const Call &call, const Portset &portset) {
    return {0, Record(size).counters(0, call.model.counters.read(kind + portset.name)).take()};
}

constexpr char kRarp[] = "rarp ";
constexpr char kServicePort[] = "service-port teaming ";

// A port that has chosen none has an empty name.
Result getPortPolicyName(const Call &, Port &port) {
    const std::string_view name = port.properties.text("com.quillon.vswitch.port.logicalswitch.teaming");
    return {0, Record(kPolicyName).text(0, kPolicyName, name).take()};
}

// u32 count and the entries. Who has room for the count alone learns how many there are, any other gets as
// many as fit, and that number.
Result getPolicyTable(const Call &call, const Portset &portset) {
    constexpr size_t kCount = sizeof(uint32_t);
    const Property *stored = nullptr;
    if (portset.owner != nullptr)
        stored = portset.owner->global.find("com.quillon.vswitch.logicalswitch.teaming");
    std::string_view entries;
    if (stored != nullptr && stored->value.size() > kCount) {
        entries = std::string_view(stored->value).substr(kCount);
        // The stored count is a client's and may promise more than there is.
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
    {0x1001, SwitchRequest::kSize, "GetRARPStats", on<requestedPortset, statistics<kRarp, kRarpStats>>},
    {0x1002, SwitchRequest::kSize, "GetServicePortTeamingStats",
     on<requestedPortset, statistics<kServicePort, kServicePortStats>>},
    {0x1024, SwitchRequest::kSize, "GetPortLSTeamingPolicyName", on<requestedPortNumber, getPortPolicyName>},
    {0x1025, SwitchRequest::kSize, "GetLSTeamingPolicyTable", on<requestedPortset, getPolicyTable>},
};

}  // namespace

constexpr DevicePart kVswitchTeaming = {.commands = kCommands};

}  // namespace qvs::kernel
