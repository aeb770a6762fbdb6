// SPDX-License-Identifier: Apache-2.0
// What several device models read alike: the head of the switch request record, and places, numbers and runs
// of addresses in a lab.
#pragma once

#include <algorithm>
#include <cerrno>

#include "daemon/devices/device.h"
#include "daemon/devices/json_members.h"

namespace qvs::kernel {

// The record that requests on /dev/vswitch begin with.
struct SwitchRequest {
    static constexpr uint32_t kSize = 268;
    static constexpr size_t kNameAt = 0;
    static constexpr size_t kNameWidth = 128;
    static constexpr size_t kPortNumberAt = 128;
    static constexpr size_t kPortIdAt = 128;
    static constexpr size_t kOwnAt = 176;  // from here on each command has fields of its own
};

// The portset that a request names; null for an unknown one.
inline const Portset *requestedPortset(const Call &call) {
    return call.model.inventory.findPortset(
        textAt(call.input, SwitchRequest::kNameAt, SwitchRequest::kNameWidth));
}

// The switch that a request names by its identifier, not by its portset.
inline const Switch *requestedSwitchById(const Call &call) {
    return call.model.inventory.findSwitch(textAt(call.input, SwitchRequest::kNameAt, 64));
}

// The distributed port of such a switch.
inline const Port *requestedDvPort(const Call &call) {
    return call.model.inventory.findPort(textAt(call.input, SwitchRequest::kNameAt, 64),
                                         textAt(call.input, SwitchRequest::kPortIdAt, 48));
}

// A handler of requests about something that `find` finds for them: what is not found answers ENOENT.
template <auto find, auto handle>
Result on(const Call &call) {
    const auto found = find(call);
    return found == nullptr ? failure(ENOENT) : handle(call, *found);
}

// The port that a request names by the kernel's number.
inline Port *requestedPortNumber(const Call &call) {
    return call.model.inventory.findPort(u32At(call.input, SwitchRequest::kPortNumberAt));
}

// The same for a request that carries nothing else.
inline const Port *numberedPort(const Call &call) {
    return call.model.inventory.findPort(u32At(call.input, 0));
}

// The ports of a portset's switch; a portset without a switch has none.
inline std::vector<Port *> portsOf(const Portset &portset) {
    std::vector<Port *> ports;
    if (portset.owner == nullptr) return ports;
    for (const auto &[number, port] : portset.owner->ports)
        ports.push_back(port.get());
    return ports;
}

// The switch that a lab calls by its alias or identifier in the member "switch".
inline Switch &switchOf(Members &members, const Model &model) {
    const std::string name = members.text("switch");
    Switch *sw = model.inventory.findByName(name);
    if (sw == nullptr) members.fail("switch", "is not a switch of this host: " + name);
    return *sw;
}

// The port of the members "switch" and "port".
inline Port &portOf(Members &members, const Model &model) {
    const Switch &sw = switchOf(members, model);
    const std::string name = members.text("port");
    Port *port = sw.port(name);
    if (port == nullptr) members.fail("port", "is not a port of the switch: " + name);
    return *port;
}

constexpr uint16_t kMaxVlan = 4094;

inline uint16_t vlanOf(Members &members) {
    const uint32_t vlan = members.maybeNumber("vlan").value_or(0);
    if (vlan > kMaxVlan) members.fail("vlan", "is not a VLAN from 0 to 4094");
    return static_cast<uint16_t>(vlan);
}

// How many things a lab means by one entry, of which there is room for so many.
inline uint32_t countOf(Members &members, size_t room) {
    const uint32_t count = members.maybeNumber("count").value_or(1);
    if (count > room) members.fail("count", "is more than there is room for");
    return count;
}

// Visits that many addresses one after the other, the first one given in the order of the network.
template <typename Address, typename Visit>
void eachAddress(const Members &members, uint32_t count, Address address, const Visit &visit) {
    bool valid = true;
    for (; count != 0; --count) {
        if (!valid) members.fail("count", "leads beyond the last address");
        visit(address);
        valid = std::any_of(address.rbegin(), address.rend(), [](auto &byte) { return ++byte != 0; });
    }
}

// Visits the objects of a member that is a list of them.
template <typename Visit>
void eachOf(const nlohmann::json &list, const char *name, const Visit &visit) {
    if (!list.is_array()) throw JsonError(std::string("lab: \"") + name + "\" is not a list");
    size_t index = 0;
    for (const nlohmann::json &element : list) {
        Members members(element, std::string("lab.") + name + '[' + std::to_string(index++) + ']');
        visit(members);
        members.finish();
    }
}

}  // namespace qvs::kernel
