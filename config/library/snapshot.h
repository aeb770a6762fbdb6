// SPDX-License-Identifier: Apache-2.0
// What the snapshot holds: switches, ports and their properties.
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

// How messages name what they are about.
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

// Walks end when visit answers false.
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
// A text property, or nothing when there is no such property.
std::optional<std::string_view> findText(const Place &place, std::string_view key);

// A 32-bit property; nothing when there is none or it has another size.
std::optional<uint32_t> findNumber(const Place &place, std::string_view key);

bool snapshotEmpty();

// Nanoseconds since the machine was started, the same for all processes.
uint64_t bootTime();
// When the loading of the snapshot began. The first is loaded before main, not before the program has
// started.
inline uint64_t snapshotTime = 0;
// Loads the snapshot again. Handles from before are void.
HYP_ReturnStatus loadSnapshot();

// Whether a change that another process was quicker to make, and may still be at, comes true: the snapshot is
// loaded again until `made` finds it there, as often as is said, 20 ms apart. What `made` throws counts only
// at the end. Handles from before are void.
bool comesTrue(const std::function<bool()> &made, int looks = 50);

// The switch with this alias; a not-found failure without one.
DVSSwitch *findSwitch(const std::string &alias);
// The same for a switch that can be changed: one of class "vswitch".
DVSSwitch *findVswitch(const std::string &alias);
DVSSwitch *findSwitchById(std::string_view switchId);
// Null when the switch has no such port.
DVSPort *lookUpPort(DVSSwitch *sw, const std::string &portId);
// The port; a not-found failure without one.
DVSPort *findPort(DVSSwitch *sw, const std::string &alias, const std::string &portId);

// The number that the kernel has for a port; a failure when it has none.
uint32_t portNumber(const std::string &alias, const std::string &portId);

uint32_t countPorts(DVSSwitch *sw);
// The words that tell how many ports a switch has room for when that was too few, and nothing for any other
// status.
std::string roomHint(HYP_ReturnStatus status, uint32_t maxPorts);
// The identifiers of the ports that carry the uplinks of a switch, in their order.
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
