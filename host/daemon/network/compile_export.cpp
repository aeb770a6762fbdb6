// SPDX-License-Identifier: Apache-2.0
// Compiles the flow sampling of a port.
#include "daemon/devices/network_counters.h"
#include "daemon/network/compile.h"

namespace qvs::kernel {

// The record: u32 idle, u32 active, u32 rate, u8 flags, u8 collectors, u16 length of a name, u32 domain, the
// source address, 8 collectors of 20 bytes, the name. A malformed record samples nothing.
std::unique_ptr<policy::IpfixT> compileIpfix(const Port &port, Slots &slots) {
    constexpr size_t kHead = 184;
    constexpr size_t kSourceAt = 20;
    constexpr size_t kCollectorsAt = 24;
    constexpr size_t kCollector = 20;
    constexpr size_t kMostCollectors = 8;
    constexpr size_t kIpv4 = 4;
    constexpr size_t kIpv6 = 16;
    const Property *stored = port.properties.find("com.quillon.net.ipfix.port");
    if (stored == nullptr || stored->value.size() < kHead) return nullptr;
    const std::string_view record = stored->value;
    const size_t collectors = u8At(record, 13);
    if (record.size() != kHead + u16At(record, 14) || collectors > kMostCollectors) return nullptr;
    auto ipfix = std::make_unique<policy::IpfixT>();
    ipfix->slot = slots.of(ipfixSlot(port.number));
    ipfix->idle = u32At(record, 0);
    ipfix->active = u32At(record, 4);
    ipfix->sampling = std::max(u32At(record, 8), 1u);
    ipfix->internalOnly = (u8At(record, 12) & 1) != 0;
    const bool vnicOnly = (u8At(record, 12) & 2) != 0;
    if (vnicOnly && port.owner->uplinkSet.contains(port.id)) return nullptr;
    ipfix->domain = u32At(record, 16);
    ipfix->domainName = record.substr(kHead);
    ipfix->source = bytesFrom(record.substr(kSourceAt, kIpv4));
    for (size_t i = 0; i < collectors; ++i) {
        const std::string_view entry = record.substr(kCollectorsAt + i * kCollector, kCollector);
        auto &collector = ipfix->collectors.emplace_back(std::make_unique<policy::CollectorT>());
        collector->address = bytesFrom(entry.substr(0, entry[18] != 0 ? kIpv6 : kIpv4));
        collector->port = u16At(entry, 16);
    }
    return ipfix;
}

}  // namespace qvs::kernel
