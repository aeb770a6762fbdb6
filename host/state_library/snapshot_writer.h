// SPDX-License-Identifier: Apache-2.0
// Writes the State blob of state.fbs: the emulated kernel's half of the snapshot.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "state_generated.h"

namespace qvs::mesh {

// Switches, ports and properties in, blob out. Identifiers are cut to what their fields hold (63 and 47
// characters).
class SnapshotWriter {
  public:
    // Names a property for the lists below. Equal properties are stored once and have one name.
    uint32_t property(std::string_view key, std::string_view value, uint32_t type);
    // The same for a caller who knows that this one is new.
    uint32_t newProperty(std::string_view key, std::string_view value, uint32_t type);

    // Begins a switch; the ports added next are its own.
    void addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts, uint32_t version,
                   std::span<const uint32_t> globals, std::span<const uint32_t> hosts);
    void addPort(std::string_view id, uint32_t state, std::span<const uint32_t> properties);
    // Other lists for what was added; both count from 0. The old ones stay behind unused.
    void replaceSwitch(uint32_t index, std::span<const uint32_t> globals, std::span<const uint32_t> hosts);
    void replacePort(uint32_t index, std::span<const uint32_t> properties);
    uint32_t switchCount() const { return static_cast<uint32_t>(switches_.size()); }
    uint32_t portCount() const { return static_cast<uint32_t>(ports_.size()); }

    // The blob. More may be added for the next one.
    flatbuffers::DetachedBuffer finish();

  private:
    struct TextHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    uint32_t append(std::string_view value);
    uint32_t text(std::string_view value);
    Range list(std::span<const uint32_t> properties);
    bool equals(const Property &property, uint32_t key, std::string_view value, uint32_t type) const;
    static size_t commonBeginning(std::span<const Port> ports);
    std::vector<uint32_t> portOrder() const;
    size_t size() const;

    std::vector<uint8_t> bytes_;
    std::vector<Property> properties_;
    std::vector<uint32_t> lists_;
    std::vector<Port> ports_;
    std::vector<uint32_t> portsById_;  // of as many ports as there were at the last blob
    std::vector<Switch> switches_;
    std::unordered_map<std::string, uint32_t, TextHash, std::equal_to<>> texts_;
    std::unordered_multimap<size_t, uint32_t> known_;  // hash of key, value and type; index of properties_
};

}  // namespace qvs::mesh
