// SPDX-License-Identifier: Apache-2.0
// What was stored before a change, in enough detail to make it so again whatever part of the change was done.
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

// Whether properties of these classes are configuration, which documents and undoing are about.
bool isConfiguration(uint32_t classes);

// The identifier that libqvs makes for a switch without one: 16 bytes that begin with those of the alias.
std::string defaultSwitchId(std::string_view alias);

// Collects what is stored now, from the snapshot. Things may be recorded again and again.
class Recorder {
  public:
    // A property that a change stores or clears; of a port when one is named.
    void property(Scope scope, DVSSwitch *sw, const std::string &port, std::string_view key);
    // A port that a change adds.
    void newPort(DVSSwitch *sw, const std::string &port);
    // A port or a switch with all that is stored there.
    void wholePort(DVSSwitch *sw, DVSPort *port);
    void wholeSwitch(DVSSwitch *sw);
    // A switch that a change creates. Nothing in it needs to be recorded. One that is there already is not
    // the change's own.
    void newSwitch(const std::string &id, const std::string &alias, const std::string &portset);
    // The MTU, which a change sets.
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
