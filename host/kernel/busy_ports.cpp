// Ports that a lab has made busy: their statistics, sixteen u64 counters, grow whenever someone looks. All
// others keep what was stored for them.
#include <cstdio>
#include <cstring>

#include <fmt/format.h>

#include "kernel/device_request.h"
#include "kernel/record_table.h"

namespace qvs::kernel {

namespace {

constexpr char kStatisticsKey[] = "com.quillon.common.port.statistics";
constexpr size_t kStatistics = 128;
constexpr char kMember[] = "busy";
// A row for each busy port: its number in hexadecimal, no value.
constexpr char kBusy[] = "busy ports";

std::string rowOf(const Port &port) {
    return fmt::format("{:08x}", port.number);
}

std::vector<Port *> busyPorts(const Model &model) {
    std::vector<Port *> ports;
    for (const auto &[row, nothing] : model.deviceValues(kBusy)) {
        uint32_t number = 0;
        std::sscanf(row.c_str(), "%8x", &number);
        if (Port *port = model.findPort(number)) ports.push_back(port);
    }
    return ports;
}

// What has grown in memory alone is stored when the port comes to rest.
void rest(Model &model, const Port &port) {
    const Property *statistics = port.properties.find(kStatisticsKey);
    if (statistics == nullptr) return;
    const std::string value = statistics->value;
    model.setProperty({Scope::Port, port.owner->id, port.id}, {kStatisticsKey, value, statistics->type});
}

// A lab that names busy ports names them all.
void applyBusy(const nlohmann::json &value, Model &model) {
    for (const Port *port : busyPorts(model))
        rest(model, *port);
    clearTable(model, kBusy);
    eachOf(value, kMember,
           [&](Members &members) { model.setDeviceValue(kBusy, rowOf(portOf(members, model)), ""); });
}

constexpr LabMember kLab[] = {{kMember, applyBusy}};

}  // namespace

void Model::look(Port &port) {
    const DeviceValues &busy = deviceValues(kBusy);
    if (busy.empty() || !busy.contains(rowOf(port))) return;
    const Property *statistics = port.properties.find(kStatisticsKey);
    if (statistics == nullptr || statistics->value.size() != kStatistics) return;
    std::string value = statistics->value;
    CounterRow counters = readCounters("port " + rowOf(port));
    for (size_t at = 0; at < value.size(); at += sizeof(uint64_t)) {
        const uint64_t grown = u64At(value, at) + counters.nextStep();
        std::memcpy(value.data() + at, &grown, sizeof grown);
    }
    port.set(pool_.intern({kStatisticsKey, value, statistics->type}));
    touch(port);
}

void Model::look(const Place &place, std::string_view key) {
    if (place.scope != Scope::Port || key != kStatisticsKey) return;
    const Switch *sw = findSwitch(place.switchId);
    if (Port *port = sw == nullptr ? nullptr : sw->port(place.portId)) look(*port);
}

void Model::lookAtAll() {
    for (Port *port : busyPorts(*this))
        look(*port);
}

constexpr DevicePart kBusyPorts = {.lab = kLab};

}  // namespace qvs::kernel
