// SPDX-License-Identifier: Apache-2.0
#include "config/library/snapshot.h"

#include <qvs/dvs.h>
#include <qvs/records.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <thread>

#include "base/failure.h"
#include "config/library/call.h"
#include "config/library/host.h"
#include "config/library/uplink_list.h"

namespace qvs {

std::string named(std::string_view alias) {
    return "switch " + inQuotes(alias);
}

std::string named(std::string_view alias, std::string_view port) {
    return named(alias) + ": port " + inQuotes(port);
}

std::string namedUplink(std::string_view alias, std::string_view uplink) {
    return named(alias) + ": uplink " + inQuotes(uplink);
}

std::optional<uint32_t> Property::number() const {
    uint32_t number = 0;
    if (value.size() != sizeof number) return std::nullopt;
    std::memcpy(&number, value.data(), sizeof number);
    return number;
}

Property view(const DVSData *data) {
    const void *value = nullptr;
    uint32_t length = DVSData_Data(data, &value);
    return {DVSData_Name(data), {static_cast<const uint8_t *>(value), length}, DVSData_PropType(data)};
}

std::optional<Property> findProperty(const Place &place, std::string_view key) {
    std::optional<Property> found;
    forEachProperty(place, [&](const Property &property) {
        if (property.key == key) found = property;
        return !found;
    });
    return found;
}

std::optional<std::string_view> findText(const Place &place, std::string_view key) {
    std::optional<Property> property = findProperty(place, key);
    if (!property) return std::nullopt;
    return property->text();
}

std::optional<uint32_t> findNumber(const Place &place, std::string_view key) {
    std::optional<Property> property = findProperty(place, key);
    if (!property) return std::nullopt;
    return property->number();
}

bool snapshotEmpty() {
    bool empty = true;
    forEachSwitch([&](DVSSwitch *) { return empty = false; });
    return empty;
}

uint64_t bootTime() {
    struct timespec now {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000 + static_cast<uint64_t>(now.tv_nsec);
}

HYP_ReturnStatus loadSnapshot() {
    snapshotTime = bootTime();
    return call<DVSLoadConfig>();
}

bool comesTrue(const std::function<bool()> &made, int looks) {
    constexpr std::chrono::milliseconds kPause(20);
    for (int look = 1;; look++) {
        requireState(loadSnapshot());
        try {
            if (made()) return true;
            if (look == looks) return false;
        } catch (const Failure &) {
            if (look == looks) throw;
        }
        std::this_thread::sleep_for(kPause);
    }
}

DVSSwitch *findSwitch(const std::string &alias) {
    SwitchIdString id{};
    require(call<DVSAliasToSwitchIdAllTypes>(alias.c_str(), id), named(alias));
    return DVSState_SwitchFindByAlias(alias.c_str());
}

DVSSwitch *findVswitch(const std::string &alias) {
    SwitchIdString id{};
    HYP_ReturnStatus status = call<DVSAliasToSwitchId>(alias.c_str(), id);
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (status == HYP_BAD_PARAM && sw != nullptr) {
        fail(Exit::Failed, "{}: class is {}, not 'vswitch'", named(alias), inQuotes(DVS_ClassName(sw)));
    }
    require(status, named(alias));
    return sw;
}

DVSSwitch *findSwitchById(std::string_view switchId) {
    DVSSwitch *found = nullptr;
    forEachSwitch([&](DVSSwitch *sw) {
        if (DVS_SwitchId(sw) == switchId) found = sw;
        return found == nullptr;
    });
    return found;
}

DVSPort *lookUpPort(DVSSwitch *sw, const std::string &portId) {
    return DVSState_PortFind(DVS_SwitchId(sw), portId.c_str());
}

DVSPort *findPort(DVSSwitch *sw, const std::string &alias, const std::string &portId) {
    DVSPort *port = lookUpPort(sw, portId);
    if (port == nullptr) {
        throw libraryFailure(named(alias, portId), HYP_NOT_FOUND);
    }
    return port;
}

uint32_t portNumber(const std::string &alias, const std::string &portId) {
    uint32_t number = 0;
    require(call<VSDVS_DvPortIDToPortID>(alias.c_str(), portId.c_str(), &number), named(alias, portId));
    return number;
}

uint32_t countPorts(DVSSwitch *sw) {
    uint32_t count = 0;
    forEachPort(sw, [&](DVSPort *) {
        count++;
        return true;
    });
    return count;
}

std::string roomHint(HYP_ReturnStatus status, uint32_t maxPorts) {
    if (status != HYP_LIMIT_EXCEEDED) return {};
    return fmt::format("there is room for {} ports, those of uplinks among them", maxPorts);
}

std::vector<std::string_view> uplinkPorts(DVSSwitch *sw) {
    std::vector<std::string_view> ports;
    std::optional<Property> list = findProperty({Scope::Host, sw}, QVS_KEY_UPLINK_PORTS);
    if (!list) return ports;
    const UplinkPorts entries(list->value);
    for (size_t i = 0; i < entries.size(); i++)
        ports.push_back(entries[i]);
    return ports;
}

PortStatus readStatus(Bytes record) {
    PortStatus status;
    QVS_PortStatus fields;
    if (record.size() < sizeof fields) return status;
    std::memcpy(&fields, record.data(), sizeof fields);
    status.inUse = (fields.flags & QVS_PORT_IN_USE) != 0;
    status.linkUp = (fields.flags & QVS_PORT_LINK_UP) != 0;
    status.blocked = (fields.flags & QVS_PORT_BLOCKED) != 0;
    status.number = uint32_t{fields.portNumber};
    const Bytes name = record.subspan(sizeof fields);
    const std::string_view client = boundedText(name.data(), name.size());
    if (!client.empty()) status.client = client;
    return status;
}

PortStatus portStatus(DVSPort *port) {
    std::optional<Property> record = findProperty(placeOf(port), QVS_KEY_PORT_STATUS);
    return record ? readStatus(record->value) : PortStatus{};
}

}  // namespace qvs
