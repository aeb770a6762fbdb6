// SPDX-License-Identifier: Apache-2.0
// qvs port ipfix: flow sampling of a port.
#include <arpa/inet.h>
#include <qvs/qvs.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "access/library.h"
#include "access/policy.h"
#include "commands/nouns.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace qvs::cli {
namespace {

constexpr Policy kIpfix{"flow sampling", QVS_KEY_PORT_IPFIX};
constexpr Limit kObsIdLimit{"observation id", std::numeric_limits<uint16_t>::max()};

using RecordBuffer = std::unique_ptr<void, Releaser<IPFIXDVS_FreeMemory>>;

// --- collectors: "10.0.0.1:4739", "[2001:db8::1]:4739" ---

IPFIXDVS_Collector parseCollector(const std::string &text) {
    auto refuse = [&] {
        fail(Exit::Usage, "--collector: {} is neither IPV4:PORT nor [IPV6]:PORT", inQuotes(text));
    };
    IPFIXDVS_Collector collector{};
    size_t colon = text.rfind(':');
    if (colon == std::string::npos) refuse();
    std::string address = text.substr(0, colon);
    collector.isIPv6 = address.starts_with('[') && address.ends_with(']') ? 1 : 0;
    if (collector.isIPv6 != 0) address = address.substr(1, address.size() - 2);
    if (inet_pton(collector.isIPv6 != 0 ? AF_INET6 : AF_INET, address.c_str(), collector.address) != 1)
        refuse();
    std::optional<uint32_t> port = parseNumber(text.substr(colon + 1));
    if (!port || *port > std::numeric_limits<uint16_t>::max()) {
        fail(Exit::Usage, "--collector: {} has no port from 0 to 65535", inQuotes(text));
    }
    collector.port = static_cast<uint16_t>(*port);
    return collector;
}

std::string ipText(int family, const void *address) {
    char text[INET6_ADDRSTRLEN];
    return inet_ntop(family, address, text, sizeof text);
}

std::string collectorText(const IPFIXDVS_Collector &collector) {
    bool ipv6 = collector.isIPv6 != 0;
    std::string address = ipText(ipv6 ? AF_INET6 : AF_INET, collector.address);
    return fmt::format(fmt::runtime(ipv6 ? "[{}]:{}" : "{}:{}"), address, uint32_t{collector.port});
}

// --- the record ---

void get(const Arguments &arguments, Output &out) {
    PolicyPlace place(kIpfix, arguments);
    void *raw = nullptr;
    place.requireRead(call<IPFIXDVS_GetIpfixGranular>(place.name(), place.port(), &raw));
    if (raw == nullptr) place.failAbsent();
    RecordBuffer buffer(raw);
    IPFIXDVS_Port port;
    std::memcpy(&port, raw, sizeof port);
    std::string_view obsId(static_cast<const char *>(raw) + sizeof port, port.virtualObsIDLength);
    std::vector<std::string> collectors;
    for (uint32_t i = 0; i < std::min<uint32_t>(port.collectorCount, IPFIXDVS_MAX_COLLECTORS); i++)
        collectors.push_back(collectorText(port.collectors[i]));
    uint32_t source = port.srcIPv4;

    Record record(out);
    place.describe(record);
    record.field("idle", "idle seconds", uint32_t{port.idleTimeout});
    record.field("active", "active seconds", uint32_t{port.activeTimeout});
    record.field("rate", "sampling rate", uint32_t{port.samplingRate});
    record.field("internalOnly", "internal flows only",
                 Flag{(port.flags & IPFIXDVS_INTERNAL_FLOWS_ONLY) != 0});
    record.field("vnicOnly", "vNICs only", Flag{(port.flags & IPFIXDVS_VNIC_SAMPLING_ONLY) != 0});
    record.field("obsDomain", "observation domain", uint32_t{port.obsDomainID});
    record.field("source", "source address", std::string_view(ipText(AF_INET, &source)));
    record.field("obsId", "observation id", obsId);
    record.field("collectors", "collectors", Words{{collectors.begin(), collectors.end()}});
    record.finish();
}

std::vector<uint8_t> givenRecord(const Arguments &arguments) {
    IPFIXDVS_Port port{};
    port.idleTimeout = arguments.number("--idle", 0);
    port.activeTimeout = arguments.number("--active", 0);
    port.samplingRate = arguments.number("--rate", 0);
    port.obsDomainID = arguments.number("--obs-domain", 0);
    if (arguments.given("--internal-only")) port.flags |= IPFIXDVS_INTERNAL_FLOWS_ONLY;
    if (arguments.given("--vnic-only")) port.flags |= IPFIXDVS_VNIC_SAMPLING_ONLY;
    if (arguments.given("--source")) {
        in_addr source{};
        if (inet_pton(AF_INET, arguments.text("--source").c_str(), &source) != 1)
            fail(Exit::Usage, "--source: {} is no IPv4 address", inQuotes(arguments.text("--source")));
        port.srcIPv4 = source.s_addr;
    }
    const std::vector<std::string> &collectors = arguments.all("--collector");
    if (collectors.size() > IPFIXDVS_MAX_COLLECTORS)
        fail(Exit::Usage, "{} collectors, at most {} fit", collectors.size(), IPFIXDVS_MAX_COLLECTORS);
    for (size_t i = 0; i < collectors.size(); i++)
        port.collectors[i] = parseCollector(collectors[i]);
    port.collectorCount = static_cast<uint8_t>(collectors.size());
    std::string obsId;
    if (arguments.given("--obs-id")) {
        obsId = arguments.text("--obs-id");
        requireFits(kObsIdLimit, obsId);
    }
    port.virtualObsIDLength = static_cast<uint16_t>(obsId.size());

    Bytes head = bytesOf(port);
    std::vector<uint8_t> record(head.begin(), head.end());
    record.insert(record.end(), obsId.begin(), obsId.end());
    return record;
}

void set(const Arguments &arguments, Output &out) {
    std::vector<uint8_t> record = givenRecord(arguments);
    PolicyPlace place(kIpfix, arguments);
    storePolicy(out, place, place.holds(record),
                [&] { return call<IPFIXDVS_SetIpfixGranular>(place.name(), place.port(), record.data()); });
}

void clear(const Arguments &arguments, Output &out) {
    PolicyPlace place(kIpfix, arguments);
    clearPolicy(out, place,
                [&] { return call<IPFIXDVS_SetIpfixGranular>(place.name(), place.port(), nullptr); });
}

const Command kRows[] = {
    {.words = "port ipfix get",
     .summary = "show the flow sampling of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port ipfix get sw1 port0",
     .run = reads(get, touches<kIpfix>)},
    {.words = "port ipfix set",
     .summary = "store the flow sampling of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .options = {{"--idle", "SECONDS", "a flow ends after this time without a frame (0)"},
                 {"--active", "SECONDS", "a flow is reported after this time even while it goes on (0)"},
                 {"--rate", "N", "sampling rate, 32 bits (0)"},
                 {"--internal-only", nullptr, "only flows that stay on this host"},
                 {"--vnic-only", nullptr, "sample at vNICs only"},
                 {"--obs-domain", "N", "observation domain, 32 bits (0)"},
                 {"--source", "IPV4", "source address of what is sent to the collectors (0.0.0.0)"},
                 {"--obs-id", "TEXT", "observation id, at most 65535 bytes (none)"},
                 {"--collector", "ADDRESS:PORT", "a collector, IPV4:PORT or [IPV6]:PORT; at most 8",
                  Kind::Word, true}},
     .details = "The whole record is replaced.",
     .example = "qvs port ipfix set sw1 port0 --active 60 --rate 100 --collector 192.0.2.9:4739",
     .run = writes(set, touches<kIpfix>)},
    {.words = "port ipfix clear",
     .summary = "remove the flow sampling of a port",
     .arguments = {kSwitchArgument, kPortArgument},
     .example = "qvs port ipfix clear sw1 port0",
     .run = writes(clear, touches<kIpfix>)},
};

}  // namespace

const std::span<const Command> kIpfixCommands = kRows;

}  // namespace qvs::cli
