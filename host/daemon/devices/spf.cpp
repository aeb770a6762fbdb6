// SPDX-License-Identifier: Apache-2.0
// /crate/devices/char/hypdriver/tarn-spf: plumbs ports into the SPF data path.
//
// A request about a switch or a port contains a switch name at 0 (128 bytes: portset name or switch
// identifier), a port identifier at 128 (48 bytes) and the text of a MAC address at 176 (18 bytes). A request
// for the statistics of one port is its number.
//
// Records in layouts/emulated.json: those that begin with spf-.
#include <cerrno>
#include <set>
#include <utility>

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
    return mac.size() == kMacSize && (u8At(mac, 0) & 1) == 0 && mac != std::string(kMacSize, '\0');
}

// One row for each plumbed port: its number and its address.
constexpr Table<uint32_t, std::string> kPlumbed("tarn-spf ports", kPortKey, kBytes<isStation>);
// The record of refused changes.
constexpr Setting<std::string> kCounts("tarn-spf", "failures", kBytes<hasSize<kFailures>>);
constexpr const AnyTable *kTables[] = {&kPlumbed, &kCounts};

const std::string *plumbedMac(const Model &model, const Port &port) {
    const auto &rows = model.tables.rows(kPlumbed);
    const auto row = rows.find(port.number);
    return row == rows.end() ? nullptr : &row->second;
}

// Returns the plumbed ports of a switch. Removed ports can still be in the table.
std::vector<const Port *> plumbedPorts(const Model &model, const Switch *sw) {
    std::vector<const Port *> ports;
    for (const auto &[number, mac] : model.tables.rows(kPlumbed)) {
        const Port *port = model.inventory.findPort(number);
        if (port != nullptr && port->owner == sw) ports.push_back(port);
    }
    return ports;
}

// Accepts both kinds of names, because a portset name can be too long for the field of a request.
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

// Returns the statistics of a port: its number and flags, followed by fields of the kind and counters.
Result portStats(const Call &call, const Port &port, const char *kind, Record stats, size_t countersAt) {
    const CounterRow counters = call.model.counters.read(kind + kPortKey.write(port.number));
    return {0, stats.put(0, port.number).put(4, port.flags()).counters(countersAt, counters).take()};
}

// A guest port is a port that is neither an uplink nor plumbed.
Result getGuestPortStats(const Call &call, const Port &port) {
    if (port.owner->uplinkSet.contains(port.id) || plumbedMac(call.model, port) != nullptr)
        return failure(ENOENT);
    return portStats(call, port, "spf guest port ", Record(kGuestStats), 8);
}

Result getServicePortStats(const Call &call, const Port &port) {
    const std::string *mac = plumbedMac(call.model, port);
    if (mac == nullptr) return failure(ENOENT);
    return portStats(call, port, "spf service port ", Record(kServiceStats).bytes(8, *mac), 16);
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

// Returns the bytes of an address, or nothing if it is not a unicast address.
std::string stationOf(std::string_view text) {
    const std::string mac = parseMac(text).value_or("");
    return isStation(mac) ? mac : "";
}

// Removes the rows of removed ports, because they would accumulate.
void forgetRemovedPorts(Model &model) {
    removeRows(model, kPlumbed,
               [&](uint32_t number, const auto &) { return model.inventory.findPort(number) == nullptr; });
}

// The addresses of all plumbed ports. An address is unique within its switch.
using Addresses = std::set<std::pair<const Switch *, std::string>>;

Addresses takenAddresses(const Model &model) {
    Addresses taken;
    for (const auto &[number, mac] : model.tables.rows(kPlumbed)) {
        if (const Port *port = model.inventory.findPort(number)) taken.emplace(port->owner, mac);
    }
    return taken;
}

// Refuses a change and counts it in the word at `offset`.
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

// Plumbs a port, or changes the address of a plumbed port.
void applyPort(Members &members, Model &model, Addresses *taken) {
    const Port &port = portOf(members, model);
    const std::string mac = stationOf(members.text("mac"));
    if (mac.empty()) members.fail("mac", "is not a unicast address");
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
