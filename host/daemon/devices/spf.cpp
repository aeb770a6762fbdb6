// SPDX-License-Identifier: Apache-2.0
// /crate/devices/char/hypdriver/tarn-spf: the ports that are plumbed into the SPF data path.
//
// Requests about a switch or port carry a switch name at 0 (128 bytes: portset name or switch identifier), a
// port identifier at 128 (48 bytes) and a MAC address as text at 176 (18 bytes); requests for the statistics
// of one port carry its number alone.
//
// Records in layouts/emulated.json: those that begin with spf-.
#include <cerrno>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "daemon/devices/device_request.h"
#include "daemon/devices/record_table.h"
#include "daemon/model/text.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kRequestSize = 194;
constexpr size_t kPortAt = 128;
constexpr size_t kMacAt = 176;
constexpr size_t kMacWidth = 18;
constexpr size_t kEntry = 8;
constexpr size_t kGuestStats = 256;
constexpr size_t kServiceStats = 104;
constexpr size_t kSwitchStats = 80;
constexpr size_t kFailures = 8;
constexpr size_t kFailedPlumbs = 0;
constexpr size_t kFailedUnplumbs = 4;
constexpr size_t kMacSize = 6;

constexpr char kMember[] = "spfPorts";

bool isStation(std::string_view mac) {
    return mac.size() == kMacSize && (static_cast<uint8_t>(mac[0]) & 1) == 0 &&
           mac != std::string(kMacSize, '\0');
}

// A row for each plumbed port: its number, and its address.
constexpr Table<uint32_t, std::string> kPlumbed("tarn-spf ports", kPortKey, kBytes<isStation>);
// How often each kind of change was refused, as answered.
constexpr Setting<std::string> kCounts("tarn-spf", "failures", kBytes<hasSize<kFailures>>);
constexpr const AnyTable *kTables[] = {&kPlumbed, &kCounts};

const std::string *plumbedMac(const Model &model, const Port &port) {
    const auto &rows = model.tables.rows(kPlumbed);
    const auto row = rows.find(port.number);
    return row == rows.end() ? nullptr : &row->second;
}

// The plumbed ports that there still are; nobody unplumbs a port before it is removed.
std::vector<const Port *> plumbedPorts(const Model &model, const Switch *sw) {
    std::vector<const Port *> ports;
    for (const auto &[number, mac] : model.tables.rows(kPlumbed)) {
        const Port *port = model.inventory.findPort(number);
        if (port != nullptr && port->owner == sw) ports.push_back(port);
    }
    return ports;
}

// Both kinds of names are taken: a portset name need not fit the field of all requests.
const Switch *requestedSwitch(const Call &call) {
    const std::string_view name = textAt(call.input, 0, kPortsetField);
    const Portset *portset = call.model.inventory.findPortset(name);
    return portset != nullptr && portset->owner != nullptr ? portset->owner
                                                           : call.model.inventory.findSwitch(name);
}

const Port *requestedPort(const Call &call) {
    const Switch *sw = requestedSwitch(call);
    return sw == nullptr ? nullptr : sw->port(textAt(call.input, kPortAt, kPortIdField));
}

// --- reading ---

Result getPortsList(const Call &call, const Portset &portset) {
    std::vector<const Port *> ports;
    if (portset.owner != nullptr) ports = plumbedPorts(call.model, portset.owner);
    return countedList(call, 0, kEntry, ports, [](const Port *port) {
        return Record(kEntry).put(0, port->number).put(4, port->flags());
    });
}

// A guest's port is any that is neither an uplink nor plumbed.
Result getGuestPortStats(const Call &call, const Port &port) {
    if (port.owner->uplinkSet.contains(port.id) || plumbedMac(call.model, port) != nullptr)
        return failure(ENOENT);
    Record stats(kGuestStats);
    stats.put(0, port.number).put(4, port.flags());
    return {
        0,
        stats.counters(8, call.model.counters.read("spf guest port " + kPortKey.write(port.number))).take()};
}

Result getServicePortStats(const Call &call, const Port &port) {
    const std::string *mac = plumbedMac(call.model, port);
    if (mac == nullptr) return failure(ENOENT);
    Record stats(kServiceStats);
    stats.put(0, port.number).put(4, port.flags()).bytes(8, *mac);
    return {0, stats.counters(16, call.model.counters.read("spf service port " + kPortKey.write(port.number)))
                   .take()};
}

Result getSwitchStats(const Call &call, const Portset &portset) {
    size_t plumbed = 0;
    if (portset.owner != nullptr) plumbed = plumbedPorts(call.model, portset.owner).size();
    Record stats(kSwitchStats);
    stats.put(0, static_cast<uint32_t>(plumbed));
    return {0, stats.counters(8, call.model.counters.read("spf switch " + portset.name)).take()};
}

std::string failures(const Model &model) {
    return model.tables.get(kCounts).value_or(std::string(kFailures, '\0'));
}

Result getConfigFailureStats(const Call &call) {
    return {0, failures(call.model)};
}

// --- changing ---

// Empty for what is not the address of a station.
std::string stationOf(std::string_view text) {
    const std::string mac = parseMac(text).value_or("");
    return isStation(mac) ? mac : "";
}

// Rows of ports that are gone are in nobody's way but would heap up.
void forgetRemovedPorts(Model &model) {
    removeRows(model, kPlumbed,
               [&](uint32_t number, const auto &) { return model.inventory.findPort(number) == nullptr; });
}

// The addresses of all plumbed ports; an address is taken within its switch.
using Addresses = std::set<std::pair<const Switch *, std::string>>;

Addresses takenAddresses(const Model &model) {
    Addresses taken;
    for (const auto &[number, mac] : model.tables.rows(kPlumbed)) {
        if (const Port *port = model.inventory.findPort(number)) taken.emplace(port->owner, mac);
    }
    return taken;
}

// Refuses a change, and counts that in the word at `offset`.
Result refuse(const Call &call, size_t offset, int error) {
    const std::string before = failures(call.model);
    Record record(kFailures);
    record.bytes(0, before).put(offset, u32At(before, offset) + 1);
    call.model.tables.set(kCounts, record.take());
    return failure(error);
}

Result plumbPort(const Call &call) {
    const Port *port = requestedPort(call);
    const std::string mac = stationOf(textAt(call.input, kMacAt, kMacWidth));
    if (port == nullptr) return refuse(call, kFailedPlumbs, ENOENT);
    if (mac.empty()) return refuse(call, kFailedPlumbs, EINVAL);
    if (plumbedMac(call.model, *port) != nullptr || takenAddresses(call.model).contains({port->owner, mac}))
        return refuse(call, kFailedPlumbs, EEXIST);
    forgetRemovedPorts(call.model);
    call.model.tables.setRow(kPlumbed, port->number, mac);
    return {};
}

Result unplumbPort(const Call &call) {
    const Port *port = requestedPort(call);
    const bool plumbed = port != nullptr && plumbedMac(call.model, *port) != nullptr;
    if (plumbed) call.model.tables.clearRow(kPlumbed, port->number);
    return plumbed ? Result{} : refuse(call, kFailedUnplumbs, ENOENT);
}

constexpr Command kCommands[] = {
    {4097, kRequestSize, "GetPortsList", on<requestedPortset, getPortsList>},
    {4098, sizeof(uint32_t), "GetGVMPortStats", on<numberedPort, getGuestPortStats>},
    {4099, sizeof(uint32_t), "GetSVMPortStats", on<numberedPort, getServicePortStats>},
    {4100, kRequestSize, "GetSPFPortStats", on<requestedPortset, getSwitchStats>},
    {8193, kRequestSize, "PlumbSpfPort", plumbPort},
    {8194, kRequestSize, "UnPlumbSpfPort", unplumbPort},
    {8195, 0, "GetConfigFailureStats", getConfigFailureStats},
};

// A port that is plumbed already gets the lab's address.
void applyPort(Members &members, Model &model, Addresses *taken) {
    const Port &port = portOf(members, model);
    const std::string mac = stationOf(members.text("mac"));
    if (mac.empty()) members.fail("mac", "is not the address of a station");
    if (const std::string *before = plumbedMac(model, port)) taken->erase({port.owner, *before});
    if (!taken->emplace(port.owner, mac).second) members.fail("mac", "is the address of another port");
    model.tables.setRow(kPlumbed, port.number, mac);
}

void applyPorts(Members &lab, Model &model) {
    Addresses taken = takenAddresses(model);
    lab.each(kMember, [&](Members &members) { applyPort(members, model, &taken); });
}

constexpr LabMember kLab[] = {{kMember, applyPorts}};

}  // namespace

constexpr DevicePart kSpf = {.commands = kCommands, .lab = kLab, .tables = kTables};

}  // namespace qvs::kernel
