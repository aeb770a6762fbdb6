// SPDX-License-Identifier: Apache-2.0
// Busy ports, which labs define. Their statistics, sixteen u64 counters, grow with every read. Other ports
// keep the stored statistics.
#include "daemon/devices/busy_ports.h"

#include <cstring>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"

namespace qvs::kernel {

namespace {

constexpr size_t kStatistics = 128;
constexpr char kMember[] = "busy";
// One row for each busy port: its number, without a value.
constexpr Table<uint32_t, std::string> kBusy("busy ports", kPortKey, kBytes<hasSize<0>>);
constexpr const AnyTable *kTables[] = {&kBusy};

std::vector<Port *> busyPorts(const Model &model) {
    std::vector<Port *> ports;
    for (const auto &[number, nothing] : model.tables.rows(kBusy)) {
        if (Port *port = model.inventory.findPort(number)) ports.push_back(port);
    }
    return ports;
}

// Stores the statistics of a port that is no longer busy. Until then they grow only in memory.
void rest(Model &model, const Port &port) {
    const Property *statistics = port.properties.find(kStatisticsKey);
    if (statistics == nullptr) return;
    const std::string value = statistics->value;
    const Status status = model.properties.set({Scope::Port, port.owner->id, port.id},
                                               {kStatisticsKey, value, statistics->type});
    if (status != Status::Ok) throw JsonError("lab: the statistics of a busy port cannot be stored");
}

// Replaces the busy ports.
void applyBusy(Members &lab, Model &model) {
    for (const Port *port : busyPorts(model))
        rest(model, *port);
    clearTable(model, kBusy);
    lab.each(kMember,
             [&](Members &members) { model.tables.setRow(kBusy, portOf(members, model).number, ""); });
}

constexpr LabMember kLab[] = {{kMember, applyBusy}};

}  // namespace

void lookAt(Model &model, Port &port) {
    if (!model.tables.rows(kBusy).contains(port.number)) return;
    const Property *statistics = port.properties.find(kStatisticsKey);
    if (statistics == nullptr || statistics->value.size() != kStatistics) return;
    std::string value = statistics->value;
    CounterRow counters = model.counters.read("port " + kPortKey.write(port.number));
    for (size_t at = 0; at < value.size(); at += sizeof(uint64_t)) {
        const uint64_t grown = u64At(value, at) + counters.nextStep();
        std::memcpy(value.data() + at, &grown, sizeof grown);
    }
    port.set(model.inventory.properties.intern({kStatisticsKey, value, statistics->type}));
    model.changes.properties(port);
}

void lookAt(Model &model, const Place &place, std::string_view key) {
    if (place.scope != Scope::Port || key != kStatisticsKey) return;
    if (Port *port = model.inventory.findPort(place.switchId, place.portId)) lookAt(model, *port);
}

void lookAtAll(Model &model) {
    for (Port *port : busyPorts(model))
        lookAt(model, *port);
}

constexpr DevicePart kBusyPorts = {.lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
