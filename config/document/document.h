// SPDX-License-Identifier: Apache-2.0
// The configuration of a host as data, from a document or from a snapshot.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings/setting.h"

namespace qvs::config {

// A stored property that no setting covers, or whose record the members of its setting cannot express.
struct RawProperty {
    std::string key;
    uint32_t classes = 0;  // DVS_PROP_...
    Blob value;

    friend bool operator==(const RawProperty &, const RawProperty &) = default;
};

// Where something stands in the text of a document: line and column from 1, the column in bytes; 0 for what
// is from no text. All are equal, so that documents compare by what they say.
struct Mark {
    uint32_t line = 0;
    uint32_t column = 0;

    friend bool operator==(const Mark &, const Mark &) { return true; }
};

// A setting with a completed value.
struct SettingEntry {
    const Setting *setting = nullptr;
    Value value;
    Mark mark = {};

    friend bool operator==(const SettingEntry &, const SettingEntry &) = default;
};

// What is stored at one place: settings in the order of the table, and other properties by key.
struct Part {
    std::vector<SettingEntry> settings;
    std::vector<RawProperty> properties;

    // Returns null when the part has no such setting or property.
    const Value *find(const Setting &setting) const;
    const RawProperty *findProperty(std::string_view key) const;
    // Whether the part has a setting, or a property in its place.
    bool names(const Setting &setting) const;

    friend bool operator==(const Part &, const Part &) = default;
};

struct PortEntry {
    std::string id;
    std::optional<uint32_t> connectId;      // as VSDVS_AddDVPort stores it
    std::optional<std::string> externalId;  // of a port that VSDVS_AddOpaqueDVPort has made
    std::optional<bool> blocked;
    Part part;

    friend bool operator==(const PortEntry &, const PortEntry &) = default;
};

struct UplinkEntry {
    std::string name;
    std::string port;  // the identifier of its port, the same in general

    friend bool operator==(const UplinkEntry &, const UplinkEntry &) = default;
};

// Members that a document leaves out are absent; a snapshot has them all.
struct SwitchEntry {
    std::string alias;
    Mark mark = {};
    // What the problems of reading it hide: what it has, and some of the settings that refer to that.
    bool hidesObjects = false;
    bool hidesSettings = false;
    std::optional<std::string> id;
    std::optional<std::string> portset;
    std::optional<uint32_t> version;
    std::optional<bool> opaque;
    std::optional<uint32_t> maxPorts;
    std::optional<std::vector<UplinkEntry>> uplinks;
    Part global;
    Part host;
    std::vector<PortEntry>
        ports;  // by identifier; a port that carries an uplink has an entry, too, if it has a part

    const PortEntry *findPort(std::string_view portId) const;
    // The identifiers of all ports, those of uplinks among them.
    std::set<std::string_view> portIds() const;

    friend bool operator==(const SwitchEntry &, const SwitchEntry &) = default;
};

struct Document {
    std::vector<SwitchEntry> switches;  // by alias

    const SwitchEntry *findSwitch(std::string_view alias) const;

    friend bool operator==(const Document &, const Document &) = default;
};

}  // namespace qvs::config
