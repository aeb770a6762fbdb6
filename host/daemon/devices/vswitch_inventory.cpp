// SPDX-License-Identifier: Apache-2.0
// /dev/vswitch: switches, ports and links.
//
// A request contains the switch name at 0 (128 bytes), the port at 128, the uplink name at 176 (32 bytes) and
// the link state to set at 208.
//
// Records in layouts/emulated.json: those from uplink to switch-alias.
#include <cerrno>

#include "daemon/devices/attachments.h"
#include "daemon/devices/busy_ports.h"
#include "daemon/devices/device_request.h"
#include "daemon/devices/network_counters.h"

namespace qvs::kernel {

namespace {

constexpr uint32_t kRequest = SwitchRequest::kSize;
constexpr size_t kUplinkAt = 176;
constexpr size_t kLinkStateAt = 208;

constexpr size_t kUplinkEntry = 36;
constexpr size_t kSwitchInfo = 220;
constexpr size_t kPortInfo = 1458;
constexpr size_t kPortsAtOnce = 512;
constexpr size_t kLagTable = 35588;
constexpr size_t kAliasEntry = 81;

Result word(uint32_t value) {
    return {0, Record(sizeof value).put(0, value).take()};
}

// Returns the uplink of a switch that has a NIC or a port of this name, or null.
const Port *findUplink(const Model &model, const Switch &sw, std::string_view name) {
    if (const Port *served = model.inventory.findServedBy(sw, name)) return served;
    const Port *port = sw.port(name);
    return port != nullptr && sw.uplinkSet.contains(port->id) ? port : nullptr;
}

const Port *requestedUplink(const Call &call) {
    const Portset *portset = requestedPortset(call);
    if (portset == nullptr || portset->owner == nullptr) return nullptr;
    return findUplink(call.model, *portset->owner, textAt(call.input, kUplinkAt, kNicField));
}

Result getUplinks(const Call &call, const Portset &portset) {
    std::vector<const Nic *> nics;
    if (portset.owner != nullptr) nics = call.model.inventory.boundNics(*portset.owner);
    return countedList(call, 0, kUplinkEntry, nics, [](const Nic *nic) {
        return Record(kUplinkEntry).text(0, kNicField, nic->name).put(32, nic->port->number);
    });
}

Result getUplinkLinkState(const Call &, const Port &uplink) {
    return word(uplink.linkUp());
}

// No uplink is a member of a LAG, so the state is always down.
Result getUplinkLacpLinkState(const Call &, const Port &) {
    return word(0);
}

Result getLagTable(const Call &, const Portset &) {
    return {0, std::string(kLagTable, '\0')};
}

Result getSwitchInfo(const Call &call, const Portset &portset) {
    Record info(kSwitchInfo);
    info.put(0, portset.number)
        .put(4, portset.capacity)
        .put(16, portset.mtu)
        .text(88, kPortsetField, portset.name);
    if (const Switch *sw = portset.owner) {
        const size_t uplinks = call.model.inventory.boundNics(*sw).size();
        info.put(8, static_cast<uint32_t>(sw->ports.size())).put(12, static_cast<uint32_t>(uplinks));
        info.put(20, sw->version).text(24, kSwitchIdField, sw->id);
    }
    return {0, info.take()};
}

// Returns the VLAN of an access port, or 0 for a trunk port.
uint16_t vlanOf(const Port &port) {
    constexpr uint16_t kTrunk = 1;
    const Property *vlan = port.properties.find(kPortVlanKey);
    if (vlan == nullptr) return 0;
    const uint32_t flagsAndId = u32At(vlan->value, 0);
    return (flagsAndId & kTrunk) != 0 ? uint16_t{0} : static_cast<uint16_t>(flagsAndId >> 16);
}

Record portInfo(const Model &model, const Port &port) {
    constexpr size_t kCounters = 128;
    Record info(kPortInfo);
    info.put(0, port.number)
        .put(4, port.flags())
        .text(8, kPortIdField, port.id)
        .text(56, 128, port.clientName());
    info.bytes(184, macOf(model, port)).put(190, vlanOf(port));
    if (const Property *counters = port.properties.find(kStatisticsKey)) {
        info.bytes(192, std::string_view(counters->value).substr(0, kCounters));
    }
    if (const Property *connect = port.properties.find(kConnectIdKey)) {
        info.put(320, u32At(connect->value, 0));
    }
    return info;
}

// The records of a large switch take long to fill in, so they are made in pieces. A port that is removed in
// the meantime is missing.
Result getSwitchPortInfo(const Call &call, const Portset &portset) {
    if (portset.owner == nullptr) return {0, ListHead(call, 0, kPortInfo, 0).bytes};
    lookAtAll(call.model, portset.owner);
    ListHead head(call, 0, kPortInfo, portset.owner->ports.size());
    if (head.entries == 0) return {0, std::move(head.bytes)};
    const auto more = [&model = call.model, row = portset.owner->row, left = head.entries,
                       next = uint32_t{0}](std::string *output) mutable {
        const auto &switches = model.inventory.switches();
        const auto sw = switches.find(row);
        if (sw == switches.end()) return false;
        const auto &ports = sw->second->ports;
        size_t room = std::min(left, kPortsAtOnce);
        left -= room;
        output->reserve(output->size() + room * kPortInfo);
        auto port = ports.lower_bound(next);
        for (; room != 0 && port != ports.end(); ++port, --room) {
            *output += portInfo(model, *port->second).view();
            next = port->first + 1;
        }
        return left != 0 && port != ports.end();
    };
    return {0, std::move(head.bytes), more};
}

Result getPortInfo(const Call &call, Port &port) {
    lookAt(call.model, port);
    return {0, portInfo(call.model, port).take()};
}

// Returns the uplink by which frames of the port leave. Without the network, or before the port has sent a
// frame, the uplinks that have a link are assigned by port number.
Result getTeamUplinkHint(const Call &call, Port &port) {
    if (const uint64_t number = slotValue(call.model, portSlot(port.number), datapath::kUplinkNow)) {
        const Port *uplink = call.model.inventory.findPort(static_cast<uint32_t>(number));
        if (uplink != nullptr && uplink->nic != nullptr)
            return {0, Record(kNicField).text(0, kNicField, uplink->nic->name).take()};
    }
    std::vector<const Nic *> nics = call.model.inventory.boundNics(*port.owner);
    std::erase_if(nics, [](const Nic *nic) { return !nic->up(); });
    Record hint(kNicField);
    if (!nics.empty()) hint.text(0, kNicField, nics[port.number % nics.size()]->name);
    return {0, hint.take()};
}

// Searches all switches, because this request contains no switch name.
Result getUplinkDvPortId(const Call &call) {
    const std::string_view name = textAt(call.input, kUplinkAt, kNicField);
    for (const auto &[row, sw] : call.model.inventory.switches()) {
        if (const Port *uplink = findUplink(call.model, *sw, name)) {
            return {0, Record(kPortIdField).text(0, kPortIdField, uplink->id).take()};
        }
    }
    return failure(ENOENT);
}

Result getSwitches(const Call &call) {
    constexpr uint32_t kPortsetNames = 1;
    const uint32_t selector = u32At(call.input, 0);
    std::vector<std::string_view> names;
    for (const auto &[number, portset] : call.model.inventory.portsets()) {
        if (selector == kPortsetNames) {
            names.push_back(portset->name);
        } else if (portset->owner != nullptr) {
            // A switch without an alias is listed with the name of its portset.
            const std::string_view alias = portset->owner->alias();
            names.push_back(alias.empty() ? std::string_view(portset->name) : alias);
        }
    }
    const size_t width = selector == kPortsetNames ? kPortsetField : kAliasEntry;
    return countedList(call, selector, width, names,
                       [&](std::string_view name) { return Record(width).text(0, width, name); });
}

const Switch *requestedByAlias(const Call &call) {
    return call.model.inventory.findAlias(textAt(call.input, 0, kPortsetField));
}

Result aliasToSwitchId(const Call &, const Switch &sw) {
    return {0, Record(kSwitchIdField).text(0, kSwitchIdField, sw.id).take()};
}

Result setUplinkAdminLinkState(const Call &call, const Port &uplink) {
    Nic *nic = uplink.nic == nullptr ? nullptr : call.model.inventory.findNic(uplink.nic->name);
    if (nic == nullptr) return failure(ENOENT);
    Nic to = *nic;
    to.admin = u32At(call.input, kLinkStateAt) != 0;
    const bool stored = call.model.uplinks.setNic(*nic, to) == Status::Ok;
    return failure(stored ? 0 : EINVAL);
}

Result refreshDevNumaInfo(const Call &, const Portset &) {
    return {};
}

constexpr Command kCommands[] = {
    {0x100b, kRequest, "GetUplinks", on<requestedPortset, getUplinks>},
    {0x100c, kRequest, "GetUplinkLinkState", on<requestedUplink, getUplinkLinkState>},
    {0x100d, kRequest, "GetUplinkLACPLinkState", on<requestedUplink, getUplinkLacpLinkState>},
    {0x100e, kRequest, "GetLAGTable", on<requestedPortset, getLagTable>},
    {0x1010, kRequest, "GetSwitchInfo", on<requestedPortset, getSwitchInfo>},
    {0x1013, kRequest, "GetSwitchPortInfo", on<requestedPortset, getSwitchPortInfo>},
    {0x1014, kRequest, "GetPortInfo", on<requestedPortNumber, getPortInfo>},
    {0x1022, kRequest, "PortGetTeamUplinkHint", on<requestedPortNumber, getTeamUplinkHint>},
    {0x1023, kRequest, "GetUplinkDVPortID", getUplinkDvPortId},
    {0x1026, sizeof(uint32_t), "GetSwitches", getSwitches},
    {0x1027, kRequest, "DVSAliasToSwitchId", on<requestedByAlias, aliasToSwitchId>},
    {0x2002, kRequest, "SetUplinkAdminLinkState", on<requestedUplink, setUplinkAdminLinkState>},
    {0x2006, kRequest, "RefreshDevNUMAInfo", on<requestedPortset, refreshDevNumaInfo>},
};

}  // namespace

constexpr DevicePart kVswitchInventory = {.commands = kCommands};

}  // namespace qvs::kernel
