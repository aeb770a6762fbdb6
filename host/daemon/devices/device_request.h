// SPDX-License-Identifier: Apache-2.0
// Functions that several devices share. They find the objects that a request or a lab names.
#pragma once

#include <algorithm>
#include <cerrno>

#include "daemon/devices/device.h"
#include "daemon/devices/json_members.h"

namespace qvs::kernel {

// The input record of most requests on /dev/vswitch. It starts with the name of the switch.
struct SwitchRequest {
    static constexpr uint32_t kSize = 268;
    static constexpr size_t kPortNumberAt = 128;
    static constexpr size_t kPortIdAt = 128;
    static constexpr size_t kOwnAt = 176;  // the fields of the single command
};

// The requested... functions return null if the request names an unknown object.

// Returns the portset that a request names.
inline const Portset *requestedPortset(const Call &call) {
    return call.model.inventory.findPortset(textAt(call.input, 0, kPortsetField));
}

// Returns the switch that a request names by its identifier.
inline const Switch *requestedSwitchById(const Call &call) {
    return call.model.inventory.findSwitch(textAt(call.input, 0, kSwitchIdField));
}

// Returns the port that a request names by the identifier of its switch and, at `portAt`, its own identifier.
template <size_t portAt = SwitchRequest::kPortIdAt, size_t switchField = kSwitchIdField>
const Port *requestedDvPort(const Call &call) {
    return call.model.inventory.findPort(textAt(call.input, 0, switchField),
                                         textAt(call.input, portAt, kPortIdField));
}

// Calls `handle` with the object that `find` returns, or answers ENOENT if `find` returns null.
template <auto find, auto handle>
Result on(const Call &call) {
    const auto found = find(call);
    return found == nullptr ? failure(ENOENT) : handle(call, *found);
}

// Returns the port that a request on /dev/vswitch names by its number.
inline Port *requestedPortNumber(const Call &call) {
    return call.model.inventory.findPort(u32At(call.input, SwitchRequest::kPortNumberAt));
}

// Returns the port whose number is the whole request.
inline const Port *numberedPort(const Call &call) {
    return call.model.inventory.findPort(u32At(call.input, 0));
}

// Returns the ports of the switch that owns a portset. A portset without a switch has no ports.
inline std::vector<Port *> portsOf(const Portset &portset) {
    std::vector<Port *> ports;
    if (portset.owner == nullptr) return ports;
    for (const auto &[number, port] : portset.owner->ports)
        ports.push_back(port.get());
    return ports;
}

// Returns the switch that the member "switch" of a lab names by its alias or identifier.
inline Switch &switchOf(Members &members, const Model &model) {
    const std::string name = members.text("switch");
    Switch *sw = model.inventory.findByName(name);
    if (sw == nullptr) members.fail("switch", "is not a switch of this host: " + name);
    return *sw;
}

// Returns the port that the members "switch" and "port" name.
inline Port &portOf(Members &members, const Model &model) {
    const Switch &sw = switchOf(members, model);
    const std::string name = members.text("port");
    Port *port = sw.port(name);
    if (port == nullptr) members.fail("port", "is not a port of the switch: " + name);
    return *port;
}

constexpr uint16_t kMaxVlan = 4094;

inline uint16_t vlanOf(Members &members) {
    return static_cast<uint16_t>(members.maybeNumber("vlan", 0, kMaxVlan).value_or(0));
}

// Returns the number of objects that an entry of a lab stands for. Fails if it exceeds `room`.
inline uint32_t countOf(Members &members, size_t room) {
    const uint32_t count = members.maybeNumber("count").value_or(1);
    if (count > room) members.fail("count", "exceeds the free room in the table");
    return count;
}

// Calls `visit` for `count` consecutive addresses. The first address is in network order.
template <typename Address, typename Visit>
void eachAddress(const Members &members, uint32_t count, Address address, const Visit &visit) {
    bool valid = true;
    for (; count != 0; --count) {
        if (!valid) members.fail("count", "exceeds the last address");
        visit(address);
        valid = std::any_of(address.rbegin(), address.rend(), [](auto &byte) { return ++byte != 0; });
    }
}

}  // namespace qvs::kernel
