// SPDX-License-Identifier: Apache-2.0
// Flow sampling of a port: a record, and an observation id behind it.
#include <arpa/inet.h>
#include <qvs/ipfixdvs.h>
#include <qvs/keys.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include "config/settings/codec.h"
#include "config/settings/families.h"

namespace qvs::config {
namespace {

using RecordBuffer = std::unique_ptr<void, Releaser<IPFIXDVS_FreeMemory>>;

// --- addresses ---

std::string ipText(int family, const void *address) {
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(family, address, text, sizeof text);
}

std::optional<uint32_t> parseIpv4(std::string_view text) {
    in_addr address{};
    if (inet_pton(AF_INET, std::string(text).c_str(), &address) != 1) return std::nullopt;
    return address.s_addr;
}

std::optional<std::string> ipv4Form(std::string_view text) {
    const std::optional<uint32_t> address = parseIpv4(text);
    if (!address) return std::nullopt;
    return ipText(AF_INET, &*address);
}

// "10.0.0.1:4739", "[2001:db8::1]:4739"
std::optional<IPFIXDVS_Collector> parseCollector(std::string_view text) {
    const size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string address(text.substr(0, colon));
    const std::optional<uint32_t> port = parseNumber(text.substr(colon + 1));
    if (!port || *port > std::numeric_limits<uint16_t>::max()) return std::nullopt;
    IPFIXDVS_Collector collector{};
    collector.port = static_cast<uint16_t>(*port);
    collector.isIPv6 = address.starts_with('[') && address.ends_with(']') ? 1 : 0;
    if (collector.isIPv6 != 0) address = address.substr(1, address.size() - 2);
    const int family = collector.isIPv6 != 0 ? AF_INET6 : AF_INET;
    if (inet_pton(family, address.c_str(), collector.address) != 1) return std::nullopt;
    return collector;
}

std::string collectorText(const IPFIXDVS_Collector &collector) {
    if (collector.isIPv6 == 0)
        return fmt::format("{}:{}", ipText(AF_INET, collector.address), uint32_t{collector.port});
    return fmt::format("[{}]:{}", ipText(AF_INET6, collector.address), uint32_t{collector.port});
}

std::optional<std::string> collectorForm(std::string_view text) {
    const std::optional<IPFIXDVS_Collector> collector = parseCollector(text);
    if (!collector) return std::nullopt;
    return collectorText(*collector);
}

// --- members ---

constexpr Member numberMember(const char *name, const char *summary, const char *unit = nullptr) {
    return {.name = name, .summary = summary, .type = Type::Number, .unit = unit, .fallback = "0"};
}
constexpr Member flagMember(const char *name, const char *summary) {
    return {.name = name, .summary = summary, .type = Type::Boolean, .fallback = "off"};
}
constexpr Member kMembers[] = {
    numberMember("idle", "a flow ends after this time without a frame", "seconds"),
    numberMember("active", "a flow is reported after this time even while it goes on", "seconds"),
    numberMember("rate", "sampling rate"),
    flagMember("internalOnly", "only flows that stay on this host"),
    flagMember("vnicOnly", "sample at vNICs only"),
    numberMember("obsDomain", "observation domain"),
    {.name = "source",
     .summary = "source address of what is sent to the collectors",
     .type = Type::Text,
     .fallback = "0.0.0.0",
     .form = ipv4Form,
     .shape = "an IPv4 address"},
    {.name = "obsId",
     .summary = "observation id",
     .type = Type::Text,
     .most = std::numeric_limits<uint16_t>::max(),
     .fallback = ""},
    {.name = "collectors",
     .summary = "collectors",
     .type = Type::Text,
     .list = true,
     .mostItems = IPFIXDVS_MAX_COLLECTORS,
     .fallback = "",
     .form = collectorForm,
     .shape = "IPV4:PORT or [IPV6]:PORT"},
};
constexpr uint8_t kAllFlags = IPFIXDVS_INTERNAL_FLOWS_ONLY | IPFIXDVS_VNIC_SAMPLING_ONLY;

// --- the record ---

Value valueOf(const IPFIXDVS_Port &port, std::string_view obsId) {
    const uint32_t source = port.srcIPv4;
    List collectors;
    for (size_t i = 0; i < std::min<size_t>(port.collectorCount, IPFIXDVS_MAX_COLLECTORS); i++)
        collectors.emplace_back(collectorText(port.collectors[i]));
    return Members{{"idle", uint64_t{port.idleTimeout}},
                   {"active", uint64_t{port.activeTimeout}},
                   {"rate", uint64_t{port.samplingRate}},
                   {"internalOnly", (port.flags & IPFIXDVS_INTERNAL_FLOWS_ONLY) != 0},
                   {"vnicOnly", (port.flags & IPFIXDVS_VNIC_SAMPLING_ONLY) != 0},
                   {"obsDomain", uint64_t{port.obsDomainID}},
                   {"source", ipText(AF_INET, &source)},
                   {"obsId", obsId},
                   {"collectors", std::move(collectors)}};
}

std::optional<Value> decode(const StoredView &stored) {
    const std::optional<Bytes> &bytes = stored[0];
    if (!bytes || bytes->size() < sizeof(IPFIXDVS_Port)) return std::nullopt;
    const auto port = *recordOf<IPFIXDVS_Port>(bytes->first(sizeof(IPFIXDVS_Port)));
    const Bytes obsId = bytes->subspan(sizeof port);
    if (obsId.size() != port.virtualObsIDLength || (port.flags & ~kAllFlags) != 0 ||
        port.collectorCount > IPFIXDVS_MAX_COLLECTORS)
        return std::nullopt;
    return ifTaken(kIpfix, valueOf(port, {reinterpret_cast<const char *>(obsId.data()), obsId.size()}));
}

Stored encode(const Value &value, const StoredView &now, const Target &) {
    IPFIXDVS_Port port{};
    port.idleTimeout = static_cast<uint32_t>(value["idle"].number());
    port.activeTimeout = static_cast<uint32_t>(value["active"].number());
    port.samplingRate = static_cast<uint32_t>(value["rate"].number());
    if (value["internalOnly"].on()) port.flags |= IPFIXDVS_INTERNAL_FLOWS_ONLY;
    if (value["vnicOnly"].on()) port.flags |= IPFIXDVS_VNIC_SAMPLING_ONLY;
    port.obsDomainID = static_cast<uint32_t>(value["obsDomain"].number());
    port.srcIPv4 = *parseIpv4(value["source"].text());
    for (const Value &text : value["collectors"].list())
        port.collectors[port.collectorCount++] = *parseCollector(text.text());
    if (now[0] && now[0]->size() >= sizeof port) {
        const auto old = *recordOf<IPFIXDVS_Port>(now[0]->first(sizeof port));
        for (size_t i = 0; i < port.collectorCount; i++)
            port.collectors[i].reserved = old.collectors[i].reserved;
    }
    const std::string &obsId = value["obsId"].text();
    port.virtualObsIDLength = static_cast<uint16_t>(obsId.size());
    Blob record = blobOf(port);
    record.insert(record.end(), obsId.begin(), obsId.end());
    return {std::move(record)};
}

std::optional<Value> read(const Target &target) {
    void *raw = nullptr;
    const HYP_ReturnStatus status =
        call<IPFIXDVS_GetIpfixGranular>(target.alias.c_str(), target.port.c_str(), &raw);
    if (!wasRead(kIpfix, target, status) || raw == nullptr) return std::nullopt;
    const RecordBuffer buffer(raw);
    IPFIXDVS_Port port;
    std::memcpy(&port, raw, sizeof port);
    return valueOf(port, {static_cast<const char *>(raw) + sizeof port, port.virtualObsIDLength});
}

HYP_ReturnStatus store(const Target &target, const Stored &records) {
    return call<IPFIXDVS_SetIpfixGranular>(target.alias.c_str(), target.port.c_str(), records[0]->data());
}

HYP_ReturnStatus clear(const Target &target) {
    return call<IPFIXDVS_SetIpfixGranular>(target.alias.c_str(), target.port.c_str(), nullptr);
}

}  // namespace

const Setting kIpfix = {
    .name = "ipfix",
    .noun = "port ipfix",
    .what = "flow sampling",
    .summary = "the flow sampling of a port",
    .scope = Scope::Port,
    .keys = {QVS_KEY_PORT_IPFIX},
    .members = kMembers,
    .example = "--active 60 --rate 100 --collectors 192.0.2.9:4739",
    .decode = decode,
    .encode = encode,
    .read = read,
    .store = store,
    .clear = clear,
};

}  // namespace qvs::config
