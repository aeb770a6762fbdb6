// SPDX-License-Identifier: Apache-2.0
// What runs on this host, gathered in one walk: switches, uplinks, ports, and the policies that differ from
// the default. Views and handles end with the next snapshot.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "access/counters.h"
#include "access/policy.h"
#include "base/natural.h"
#include "config/library/snapshot.h"
#include "config/settings/value.h"

namespace qvs::cli {

struct PortFacts {
    DVSPort *handle = nullptr;
    size_t index = 0;  // in the order of the snapshot
    std::string_view id;
    std::optional<std::string_view> alias;
    std::optional<uint32_t> number;  // the kernel's
    std::optional<uint32_t> connectId;
    std::optional<std::string_view> externalId;
    std::optional<std::string_view> client;
    bool inUse = false;
    bool linkUp = false;
    bool blocked = false;           // as it is configured
    bool kernelBlocked = false;     // as the kernel says
    std::string vlan;               // in words: "100", "trunk 1-100", "private 101"; empty for none
    config::Value vlanPolicy;       // its members; absent for none
    std::vector<Policy> policies;   // without VLAN and mirror sessions
    std::optional<size_t> uplink;   // the place in SwitchFacts::uplinks of the uplink that it carries
    std::optional<size_t> carrier;  // that of the uplink that teaming would choose, when it was asked for
    std::optional<uint32_t> speedMbps;
    std::optional<CounterValues> counters;
};

struct UplinkFacts {
    std::string name;
    std::string portId;
    std::optional<size_t> port;           // the place in SwitchFacts::ports
    std::optional<std::string_view> nic;  // nothing while no NIC is bound
    std::optional<bool> linkUp;           // nothing when the kernel does not answer for it
    std::optional<bool> lacpUp;
    std::optional<uint32_t> speedMbps;
};

struct MirrorFacts {
    std::string_view port;  // empty for a session of the uplinks of this host
    config::Value session;  // its members, as the settings of mirror sessions have them

    std::string_view text(std::string_view member) const;  // empty when it is absent
    std::vector<std::string_view> texts(std::string_view member) const;
    bool disabled() const;
};

struct PrivateVlanFacts {
    uint32_t primary = 0;
    uint32_t secondary = 0;
    std::string type;
};

// A stored setting that refers to objects which do not exist. Mirror sessions are not among them.
struct MissingReferences {
    std::string_view port;  // empty for a setting of the switch
    const config::Setting *setting = nullptr;
    std::vector<std::string> objects;  // "uplink 'uplink7'"
};

struct SwitchFacts {
    DVSSwitch *handle = nullptr;
    std::optional<std::string_view> alias;
    std::string_view id;
    std::string_view className;
    std::optional<std::string_view> portset;
    uint32_t version = 0;
    uint32_t maxPorts = 0;
    uint32_t portsInUse = 0;
    bool opaque = false;
    std::optional<uint64_t> mtu;
    std::vector<UplinkFacts> uplinks;
    std::vector<PortFacts> ports;  // those of the uplinks among them, in the order of their names
    std::vector<MirrorFacts> mirrors;
    std::vector<PrivateVlanFacts> privateVlans;
    std::vector<Policy> policies;  // without MTU, private VLANs and mirror sessions
    std::vector<MissingReferences> missing;
    std::vector<std::string> gaps;  // what could not be read, in words: "MTU"

    // The alias, else the identifier.
    std::string_view name() const { return alias ? *alias : id; }
};

// What is gathered: numbers, states and VLANs; that and the policies of the snapshot; or, asked of the
// kernel, the MTU of switches and the links of uplinks, and what settings refer to in vain, too.
enum class Ask { NumbersAlone, SnapshotAlone, Kernel };

// The switch, or all switches, in the order of their names. What cannot be read is left out, warned of and
// named among the gaps.
SwitchFacts gatherSwitch(DVSSwitch *sw, Ask ask = Ask::Kernel);
std::vector<SwitchFacts> gatherSwitches(Ask ask = Ask::Kernel);

// The state of an uplink's link, or nothing when the kernel does not know the uplink or its request has no
// room for the name. Throws Failure.
std::optional<bool> uplinkLink(const std::string &portset, const std::string &uplink,
                               std::string_view subject);
std::optional<bool> uplinkLacpLink(const std::string &portset, const std::string &uplink,
                                   std::string_view subject);

}  // namespace qvs::cli
