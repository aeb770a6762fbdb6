// SPDX-License-Identifier: Apache-2.0
// /dev/traceflow: trace requests, which are kept until they are cleared, telemetry and statistics of ports.
//
// A trace request contains the switch identifier at 0 (64 bytes), the port identifier at 64 (48 bytes),
// source and destination address at 112 and 118, and five values: u32 at 124 and 128, u16 at 132, u64 at 134
// and 142. A request that clears contains the switch identifier at 0.
//
// Records in layouts/emulated.json: trace-stats, telemetry.
#include <cerrno>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kRequest = 150;
constexpr uint32_t kClear = 112;
constexpr size_t kStats = 64;
constexpr uint32_t kTelemetrySize = 6;
constexpr size_t kRoom = 1024;

// A stored request: u32 port number and the input.
constexpr size_t kKeptAt = 4;

bool isRequest(std::string_view kept) {
    return kept.size() == kKeptAt + kRequest && u32At(kept, 0) != 0;
}

constexpr RecordTable kRequests("traceflow.requests", kRecordKey, kBytes<isRequest>, kRoom);
constexpr Setting<std::string> kTelemetry("traceflow", "telemetry", kBytes<hasSize<kTelemetrySize>>);
constexpr const AnyTable *kTables[] = {&kRequests, &kTelemetry};

Result createRequest(const Call &call) {
    if (call.input.size() != kRequest) return failure(EINVAL);
    const Port *port = requestedDvPort<64>(call);
    if (port == nullptr) return failure(ENOENT);
    dropDeadRecords(call.model, kRequests);
    if (roomIn(call.model, kRequests) == 0) return failure(ENOSPC);
    appendRecord(call.model, kRequests,
                 Record(kKeptAt + kRequest).put(0, port->number).bytes(kKeptAt, call.input).view());
    return {};
}

Result clearRequests(const Call &call, const Switch &sw) {
    dropDeadRecords(call.model, kRequests);
    removeRows(call.model, kRequests, [&](const auto &, std::string_view kept) {
        return call.model.inventory.findPort(u32At(kept, 0))->owner == &sw;
    });
    return {};
}

Result getPortStats(const Call &call, const Port &port) {
    CounterRow counters = call.model.counters.read(fmt::format("traceflow {}", port.number));
    return {0, Record(kStats).counters(0, counters).take()};
}

std::string telemetry(const Model &model) {
    return model.tables.get(kTelemetry).value_or(std::string(kTelemetrySize, '\0'));
}

Result setTelemetry(const Call &call) {
    if (call.input.size() != kTelemetrySize) return failure(EINVAL);
    call.model.tables.set(kTelemetry, std::string(call.input));
    return {};
}

Result getTelemetry(const Call &call) {
    return {0, telemetry(call.model)};
}

constexpr Command kCommands[] = {
    {0, kRequest, "CreateRequest", createRequest},
    {1, kClear, "ClearConfig", on<requestedSwitchById, clearRequests>},
    {2, sizeof(uint32_t), "GetPortStats", on<numberedPort, getPortStats>},
    {3, kTelemetrySize, "SetINTConfig", setTelemetry},
    {4, 0, "GetINTConfig", getTelemetry},
};

nlohmann::json describeRequest(const Port &port, uint32_t number, std::string_view request) {
    return {{"number", number},
            {"switch", port.owner->id},
            {"port", port.id},
            {"source", hexDigits(request.substr(112, 6), ":")},
            {"destination", hexDigits(request.substr(118, 6), ":")},
            {"word1", u32At(request, 124)},
            {"word2", u32At(request, 128)},
            {"short", u16At(request, 132)},
            {"value1", u64At(request, 134)},
            {"value2", u64At(request, 142)}};
}

void describe(const Model &model, nlohmann::json *status) {
    auto requests = nlohmann::json::array();
    eachRecord(model, kRequests, [&](uint32_t number, std::string_view kept) {
        const Port &port = *model.inventory.findPort(u32At(kept, 0));
        requests.push_back(describeRequest(port, number, kept.substr(kKeptAt)));
    });
    (*status)["traceflow"] = {{"requests", requests}, {"telemetry", hexDigits(telemetry(model))}};
}

}  // namespace

constexpr DevicePart kTraceflow = {.commands = kCommands, .tables = kTables, .describe = describe};

}  // namespace qvs::kernel
