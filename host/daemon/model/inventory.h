// SPDX-License-Identifier: Apache-2.0
// The switches, ports, portsets and NICs in memory. This class does not write to the store.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "daemon/model/entities.h"
#include "wire/noncopyable.h"

namespace qvs::kernel {

class Inventory : private wire::Noncopyable {
  public:
    static constexpr uint32_t kFirstPort = 0x4000001;

    // Returns true if there is no portset and no switch.
    bool empty() const { return switches_.empty() && portsets_.empty(); }
    // Switches are in the order of creation, portsets in the order of their numbers.
    const std::map<int64_t, std::unique_ptr<Switch>> &switches() const { return switches_; }
    const std::map<uint32_t, std::unique_ptr<Portset>> &portsets() const { return portsets_; }
    const std::vector<std::unique_ptr<Nic>> &nics() const { return nics_; }
    size_t portCount() const { return ports_.size(); }
    // Returns the number of the next port. Numbers are not reused.
    uint32_t nextPort() const { return nextPort_; }

    // The find functions return null for an unknown object.
    Switch *findSwitch(std::string_view id) const;
    // Returns the first switch whose alias starts with the same kMaxAlias characters.
    Switch *findAlias(std::string_view alias) const;
    // Returns the switch with this alias, or else the switch with this identifier.
    Switch *findByName(std::string_view name) const;
    Portset *findPortset(std::string_view name) const;
    Port *findPort(uint32_t number) const;
    Port *findPort(std::string_view switchId, std::string_view portId) const;
    Nic *findNic(std::string_view name) const;
    // Returns the port of the switch that a NIC is bound to, or null.
    Port *findServedBy(const Switch &sw, std::string_view nic) const;
    // Returns the bound NICs of a switch, in the order of its uplink list.
    std::vector<const Nic *> boundNics(const Switch &sw) const;

    void clear();
    void insert(std::unique_ptr<Switch> sw);
    void erase(Switch &sw);
    void insert(std::unique_ptr<Portset> portset);
    void erase(Portset &portset);
    Port &insertPort(Switch &sw, uint32_t number, std::string_view id);
    void erase(Port &port);
    void insert(std::unique_ptr<Nic> nic) { nics_.push_back(std::move(nic)); }
    void clearNics() { nics_.clear(); }
    // Remove and add the alias of a switch. Call them before and after the alias changes.
    void eraseAlias(Switch &sw);
    void insertAlias(Switch &sw);
    void keepFrom(uint32_t nextPort) { nextPort_ = std::max(nextPort_, nextPort); }

    // The pool of all properties.
    PropertyPool properties;

  private:
    std::map<int64_t, std::unique_ptr<Switch>> switches_;
    std::unordered_map<std::string_view, Switch *> switchesById_;
    std::unordered_map<std::string, std::vector<Switch *>> switchesByAlias_;
    std::map<uint32_t, std::unique_ptr<Portset>> portsets_;
    std::unordered_map<std::string_view, Portset *> portsetsByName_;
    std::unordered_map<uint32_t, Port *> ports_;
    std::vector<std::unique_ptr<Nic>> nics_;
    uint32_t nextPort_ = kFirstPort;
};

// Returns the number after the last one of a list that is sorted by number.
template <typename Number, typename Entity>
Number numberAfter(const std::map<Number, std::unique_ptr<Entity>> &entities) {
    return entities.empty() ? Number{1} : entities.rbegin()->first + 1;
}

}  // namespace qvs::kernel
