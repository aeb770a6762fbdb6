// SPDX-License-Identifier: Apache-2.0
// Records what was stored before a change, so that it can be restored whatever part of the change was carried
// out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "config/library/snapshot.h"
#include "config/settings/value.h"

namespace qvs::config {

struct PropertyBefore {
    std::string key;
    uint32_t classes = 0;
    std::optional<Blob> value;  // nothing: it was not stored
};

struct PartBefore {
    bool whole = false;  // every other property of the configuration was not stored
    std::vector<PropertyBefore> properties;
};

struct PortBefore {
    std::string id;
    bool there = true;
    PartBefore part;
};

struct SwitchBefore {
    std::string id;
    std::string alias;
    std::string portset;
    bool there = true;
    bool whole = false;  // every other port was not there
    bool opaque = false;
    uint32_t version = 0;
    uint32_t maxPorts = 0;
    std::optional<uint32_t> mtu;  // of the portset
    bool setsMtu = false;         // the change sets the MTU, that of the NICs, too
    PartBefore global;
    PartBefore host;
    std::vector<PortBefore> ports;
};

struct Before {
    std::vector<SwitchBefore> switches;
};

// Returns whether properties of these classes are configuration, which documents contain and an undo
// restores.
bool isConfiguration(uint32_t classes);

// Returns the identifier that libqvs makes for a switch without one: 16 bytes that begin with the start of
// the alias.
std::string defaultSwitchId(std::string_view alias);

// Records the present state from the snapshot. An object may be recorded several times.
class Recorder {
  public:
    // Records a property that a change stores or clears, of a port if one is named.
    void property(Scope scope, DVSSwitch *sw, const std::string &port, std::string_view key);
    // Records that a change adds this port.
    void newPort(DVSSwitch *sw, const std::string &port);
    // Records a port, or a switch, with everything that is stored there.
    void wholePort(DVSSwitch *sw, DVSPort *port);
    void wholeSwitch(DVSSwitch *sw);
    // Records that a change creates this switch. Its contents need not be recorded. Has no effect if the
    // switch exists already.
    void newSwitch(const std::string &id, const std::string &alias, const std::string &portset);
    // Records the MTU of a switch.
    void mtu(DVSSwitch *sw);

    const Before &before() const { return before_; }

  private:
    SwitchBefore &entry(DVSSwitch *sw);
    PortBefore &portEntry(DVSSwitch *sw, const std::string &port);

    Before before_;
    std::unordered_map<std::string, size_t> switches_;
    std::unordered_map<std::string, std::unordered_map<std::string, size_t>> ports_;  // by switch
};

}  // namespace qvs::config
