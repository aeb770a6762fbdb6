// SPDX-License-Identifier: Apache-2.0
// Builds the State blob of state.fbs for the emulated kernel.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "state_generated.h"

namespace qvs::mesh {

// Builds a blob from switches, ports and properties. Identifiers are truncated to 63 and 47 characters.
class SnapshotWriter {
  public:
    // Adds a property and returns its number for the lists below.
    uint32_t property(std::string_view key, std::string_view value, uint32_t type);

    // Adds a switch. Ports are added to the last switch.
    void addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts, uint32_t version,
                   std::span<const uint32_t> globals, std::span<const uint32_t> hosts);
    void addPort(std::string_view id, uint32_t state, std::span<const uint32_t> properties);
    // Adds a port to a switch before the port with this index, or removes the port. The indices of the ports
    // behind it change. Each takes as long as copying a part of all ports. Call them after `finish`.
    void insertPort(uint32_t sw, uint32_t index, std::string_view id, uint32_t state,
                    std::span<const uint32_t> properties);
    void removePort(uint32_t sw, uint32_t index);
    // Replace the properties of a switch or port, which have indices from 0. The old lists stay in the blob.
    void replaceSwitch(uint32_t index, std::span<const uint32_t> globals, std::span<const uint32_t> hosts);
    void replacePort(uint32_t index, std::span<const uint32_t> properties);
    uint32_t switchCount() const { return static_cast<uint32_t>(switches_.size()); }
    const Range &ports(uint32_t sw) { return switches_[sw].mutable_ports(); }

    // Returns the blob. More can be added afterwards for the next blob.
    flatbuffers::DetachedBuffer finish();

  private:
    struct TextHash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    uint32_t append(std::string_view value);
    uint32_t text(std::string_view value);
    Range list(std::span<const uint32_t> properties);
    void resize(uint32_t sw, uint32_t added);
    std::vector<uint32_t>::iterator placeById(const Range &range, const Port &port);
    std::optional<Alias> aliasOf(uint32_t sw) const;
    std::string_view text(const Alias &alias) const;
    void indexSwitches();
    static size_t commonBeginning(std::span<const Port> ports);
    std::vector<uint32_t> portOrder() const;
    size_t size() const;

    std::vector<uint8_t> bytes_;
    std::vector<Property> properties_;
    std::vector<uint32_t> lists_;
    std::vector<Port> ports_;
    std::vector<uint32_t> portsById_;  // the ports of the last blob in the order of their identifiers
    std::vector<Switch> switches_;
    std::vector<uint32_t> switchesById_;
    std::vector<Alias> aliases_;
    bool indexedSwitches_ = false;
    std::unordered_map<std::string, uint32_t, TextHash, std::equal_to<>> texts_;
};

}  // namespace qvs::mesh
