// SPDX-License-Identifier: Apache-2.0
// Busy ports, which labs define. Their statistics, sixteen u64 counters, grow with every read. The statistics
// of ports with an attachment grow by what the data path counts. Other ports keep the stored statistics.
#include "daemon/devices/busy_ports.h"

#include <array>
#include <cstring>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"
#include "datapath/shared.h"

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

namespace {

using Growth = std::array<uint64_t, kStatistics / sizeof(uint64_t)>;

// Adds the growth to the statistics of a port, in memory.
void grow(Model &model, Port &port, const Growth &growth) {
    const Property *statistics = port.properties.find(kStatisticsKey);
    std::string value = statistics == nullptr ? std::string(kStatistics, '\0') : statistics->value;
    const uint32_t type = statistics == nullptr ? kRuntime : statistics->type;
    for (size_t i = 0; i < growth.size(); ++i) {
        const uint64_t grown = u64At(value, i * sizeof(uint64_t)) + growth[i];
        std::memcpy(value.data() + i * sizeof grown, &grown, sizeof grown);
    }
    port.set(model.inventory.properties.intern({kStatisticsKey, value, type}));
    model.changes.properties(port);
}

// Adds what the data path has counted since the last look, so that counters that a client stored continue.
void lookAtNetwork(Model &model, Port &port, datapath::Slot &slot) {
    Growth growth{};
    bool grown = false;
    for (uint32_t i = 0; i < growth.size(); ++i) {
        const uint64_t now = slot.values[i].load(std::memory_order_relaxed);
        growth[i] = now - port.counted[i];
        grown = grown || growth[i] != 0;
        port.counted[i] = now;
    }
    if (grown) grow(model, port, growth);
}

bool hasStatistics(const Port &port) {
    const Property *statistics = port.properties.find(kStatisticsKey);
    return statistics != nullptr && statistics->value.size() == kStatistics;
}

}  // namespace

void lookAt(Model &model, Port &port) {
    const bool attached = model.facts.attached.contains(port.number);
    if (attached && (hasStatistics(port) || port.properties.find(kStatisticsKey) == nullptr)) {
        if (datapath::Slot *slot = model.facts.slotOf(portSlot(port.number)))
            return lookAtNetwork(model, port, *slot);
    }
    if (!model.tables.rows(kBusy).contains(port.number) || !hasStatistics(port)) return;
    CounterRow counters = model.counters.read("port " + kPortKey.write(port.number));
    Growth growth{};
    for (uint64_t &step : growth)
        step = counters.nextStep();
    grow(model, port, growth);
}

void lookAt(Model &model, const Place &place, std::string_view key) {
    if (place.scope != Scope::Port || key != kStatisticsKey) return;
    if (Port *port = model.inventory.findPort(place.switchId, place.portId)) lookAt(model, *port);
}

void lookAtAll(Model &model, const Switch *of) {
    const auto wanted = [of](const Port *port) {
        return port != nullptr && (of == nullptr || port->owner == of);
    };
    for (Port *port : busyPorts(model)) {
        if (wanted(port) && !model.facts.attached.contains(port->number)) lookAt(model, *port);
    }
    for (const uint32_t number : model.facts.attached) {
        if (Port *port = model.inventory.findPort(number); wanted(port)) lookAt(model, *port);
    }
}

constexpr DevicePart kBusyPorts = {.lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
