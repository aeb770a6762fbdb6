// SPDX-License-Identifier: Apache-2.0
// The objects of the emulated kernel: switches, ports, portsets and physical NICs.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "daemon/model/port_index.h"
#include "daemon/model/property.h"
#include "wire/protocol.h"

namespace qvs::kernel {

using wire::Scope;

constexpr char kAliasKey[] = "com.quillon.common.alias";
constexpr char kPortsetKey[] = "com.quillon.common.host.portset";
constexpr char kUplinkPortsKey[] = "com.quillon.common.host.uplinkPorts";
constexpr char kPortBlockKey[] = "com.quillon.common.port.block";
constexpr char kPortStatusKey[] = "com.quillon.common.port.volatile.status";
constexpr char kStatisticsKey[] = "com.quillon.common.port.statistics";
constexpr char kPortVlanKey[] = "com.quillon.vswitch.port.vlan";
constexpr char kConnectIdKey[] = "com.quillon.common.port.connectid";

// Widths of the fields that contain names. A name is at least one byte shorter, because a NUL follows it.
constexpr size_t kSwitchIdField = 64;
constexpr size_t kPortIdField = 48;
constexpr size_t kPortsetField = 128;
constexpr size_t kNicField = 32;
constexpr size_t kMaxSwitchId = kSwitchIdField - 1;
constexpr size_t kMaxPortId = kPortIdField - 1;
constexpr size_t kMaxPortsetName = kPortsetField - 1;
constexpr size_t kMaxNicName = kNicField - 1;
constexpr size_t kMaxAlias = 80;
constexpr uint32_t kMinMtu = 1280;
constexpr uint32_t kMaxMtu = 9000;
constexpr uint32_t kDefaultMtu = 1500;

// Flags of the status property and of port records.
constexpr uint32_t kPortInUse = 1;
constexpr uint32_t kPortLinkUp = 2;
constexpr uint32_t kPortBlocked = 4;

struct Switch;
struct Port;

struct Nic {
    std::string name;
    bool link = true;
    bool admin = true;
    bool carrier = true;  // of its attachment; not stored
    uint32_t speedMbps = 10000;
    uint32_t mtu = kDefaultMtu;
    std::array<uint8_t, 6> mac{};
    Port *port = nullptr;  // the uplink port it is bound to

    // The link as labs and clients want it, and as it is.
    bool wanted() const { return link && admin; }
    bool up() const { return wanted() && carrier; }
};

struct Portset {
    uint32_t number = 0;
    std::string name;
    uint32_t capacity = 0;
    uint32_t mtu = kDefaultMtu;
    Switch *owner = nullptr;
};

struct Port {
    // Tells who provides the status property. A client that sets or clears it replaces the kernel until the
    // state of the port changes.
    enum class StatusFrom { Kernel, Client };

    uint32_t number = 0;
    Switch *owner = nullptr;
    std::string id;
    PropertyList properties;  // changed only by `set` and `clear`
    bool blocked = false;     // the value of the block property
    std::string client;
    bool clientLink = false;
    bool carrier = true;  // of the attachment of the client; not stored
    StatusFrom statusFrom = StatusFrom::Kernel;
    bool changed = false;  // whether the port has rows in port_properties
    const Nic *nic = nullptr;
    // What the check of VLANs and MTU found at an uplink with an attachment: 512 bytes with a bit for each
    // VLAN, u16 MTU. One byte: nothing yet. Not stored.
    std::string checked;
    std::array<uint64_t, 16> counted{};  // counters of the data path that the statistics contain

    void set(PropertyRef property);
    void clear(std::string_view key);
    bool inUse() const { return nic != nullptr || !client.empty(); }
    bool linkUp() const { return nic != nullptr ? nic->up() : !client.empty() && clientLink && carrier; }
    std::string_view clientName() const { return nic != nullptr ? nic->name : client; }
    uint32_t flags() const;
    // Returns the value of the status property that the kernel provides. The kernel's value is not in
    // `properties`.
    std::string statusRecord() const;
    // Makes the kernel provide the status property again.
    void returnStatus();
};

struct Switch {
    int64_t row = 0;
    std::string id;
    std::string className;
    uint32_t maxPorts = 0;
    uint32_t version = 0;
    PropertyList global;
    PropertyList host;
    Portset *portset = nullptr;                   // while associated
    std::pmr::unsynchronized_pool_resource pool;  // keeps the nodes of `ports` close together in memory
    std::pmr::map<uint32_t, std::unique_ptr<Port>> ports{&pool};  // by number, which is the order of creation
    PortIndex portsById;
    // The entries of the uplink list, in order and for lookup.
    std::vector<std::string> uplinks;
    std::unordered_set<std::string> uplinkSet;
    mutable uint32_t snapshotIndex = 0;  // its index in the snapshot

    void setUplinks(std::vector<std::string> names);
    Port *port(std::string_view portId) const;
    std::string_view alias() const { return global.text(kAliasKey); }
    PropertyList &properties(Scope scope) { return scope == Scope::Global ? global : host; }
    const PropertyList &properties(Scope scope) const { return scope == Scope::Global ? global : host; }
};

// Tells whether a text is a valid name: not empty, at most this long, without NUL. Names of nodes in the
// shell contain no slash.
inline bool isName(std::string_view name, size_t maximum) {
    return !name.empty() && name.size() <= maximum && name.find('\0') == std::string_view::npos;
}
inline bool isNodeName(std::string_view name, size_t maximum) {
    return isName(name, maximum) && name.find('/') == std::string_view::npos;
}
inline bool isMtu(uint32_t mtu) {
    return mtu >= kMinMtu && mtu <= kMaxMtu;
}

// The place of a property.
struct Place {
    Scope scope = Scope::Global;
    std::string_view switchId;
    std::string_view portId;
};

// Returns the names in the uplink list of a host: a u32 count, followed by names of 48 bytes.
std::vector<std::string> parseUplinkPorts(std::string_view value);

}  // namespace qvs::kernel
