// SPDX-License-Identifier: Apache-2.0
// Reads switches, ports and their properties from the snapshot.
#pragma once

#include <qvs/keys.h>
#include <qvs/mesh_public.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "config/library/limits.h"

namespace qvs {

// The names of objects in messages.
std::string named(std::string_view alias);                         // "switch 'sw1'"
std::string named(std::string_view alias, std::string_view port);  // "switch 'sw1': port 'p'"
std::string namedUplink(std::string_view alias, std::string_view uplink);

// One property; it belongs to the snapshot.
struct Property {
    std::string_view key;
    Bytes value;
    uint32_t classes = 0;

    // The value as text, up to its NUL.
    std::string_view text() const { return boundedText(value.data(), value.size()); }
    std::optional<uint32_t> number() const;
};
Property view(const DVSData *data);

namespace detail {
template <typename Handle, typename Visit>
int visitHandle(Handle *handle, void *visit) {
    return (*static_cast<Visit *>(visit))(handle) ? 0 : 1;
}
template <typename Visit>
int visitProperty(DVSData *data, void *visit) {
    return (*static_cast<Visit *>(visit))(view(data)) ? 0 : 1;
}
}  // namespace detail

// Visits all objects. Stops when `visit` returns false.
template <typename Visit>
void forEachSwitch(Visit visit) {
    DVSState_SwitchForEach(detail::visitHandle<DVSSwitch, Visit>, &visit);
}
template <typename Visit>
void forEachPort(DVSSwitch *sw, Visit visit) {
    DVSState_PortForEach(sw, detail::visitHandle<DVSPort, Visit>, &visit);
}

// The three places of properties: all hosts of a switch, this host, a port.
enum class Scope { Global = QVS_SCOPE_GLOBAL, Host = QVS_SCOPE_HOST, Port = QVS_SCOPE_PORT };
struct Place {
    Scope scope = Scope::Global;
    DVSSwitch *sw = nullptr;
    DVSPort *port = nullptr;
};
inline Place placeOf(DVSPort *port) {
    return {Scope::Port, nullptr, port};
}
template <typename Visit>
void forEachProperty(const Place &place, Visit visit) {
    switch (place.scope) {
        case Scope::Global:
            DVSState_GlobalPropForEach(place.sw, detail::visitProperty<Visit>, &visit);
            break;
        case Scope::Host:
            DVSState_HostPropForEach(place.sw, detail::visitProperty<Visit>, &visit);
            break;
        case Scope::Port:
            DVSState_PortDataForEach(place.port, detail::visitProperty<Visit>, &visit);
            break;
    }
}
std::optional<Property> findProperty(const Place &place, std::string_view key);
// Returns the value of a text property, or nothing when it is not stored.
std::optional<std::string_view> findText(const Place &place, std::string_view key);

// Returns the value of a 32-bit property, or nothing when it is not stored or has another size.
std::optional<uint32_t> findNumber(const Place &place, std::string_view key);

bool snapshotEmpty();

// Nanoseconds since the machine was started, the same for all processes.
uint64_t bootTime();
// The time at which the snapshot began to load. The first snapshot is loaded before main.
inline uint64_t snapshotTime = 0;
// Loads the snapshot again, which invalidates all handles.
HYP_ReturnStatus loadSnapshot();

// Waits for a change of another process: loads the snapshot again, 20 ms apart and at most the given number
// of times, until `made` returns true. A failure that `made` throws counts only at the last attempt. All
// handles become invalid.
bool comesTrue(const std::function<bool()> &made, int looks = 50);

// Returns the switch with this alias. Throws a not-found failure.
DVSSwitch *findSwitch(const std::string &alias);
// Does the same, and throws for a switch that is not of class "vswitch" and so cannot be changed.
DVSSwitch *findVswitch(const std::string &alias);
DVSSwitch *findSwitchById(std::string_view switchId);
// Returns the port, or null.
DVSPort *lookUpPort(DVSSwitch *sw, const std::string &portId);
// Returns the port. Throws a not-found failure.
DVSPort *findPort(DVSSwitch *sw, const std::string &alias, const std::string &portId);

// Returns the number of the port in the kernel. Throws when it has none.
uint32_t portNumber(const std::string &alias, const std::string &portId);

uint32_t countPorts(DVSSwitch *sw);
// Returns a hint with the capacity of a switch if `status` says that the capacity was exceeded. Empty for any
// other status.
std::string roomHint(HYP_ReturnStatus status, uint32_t maxPorts);
// Returns the identifiers of the uplink ports of a switch, in their order.
std::vector<std::string_view> uplinkPorts(DVSSwitch *sw);

// The record that the kernel keeps for each port.
struct PortStatus {
    bool inUse = false;
    bool linkUp = false;
    bool blocked = false;
    std::optional<uint32_t> number;
    std::optional<std::string_view> client;  // nothing for a port that nobody uses
};
PortStatus readStatus(Bytes record);
PortStatus portStatus(DVSPort *port);

}  // namespace qvs
