// SPDX-License-Identifier: Apache-2.0
// The switches, ports, portsets and NICs in memory, and how each is found. Nothing here is stored.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "daemon/model/entities.h"

namespace qvs::kernel {

class Inventory {
  public:
    static constexpr uint32_t kFirstPort = 0x4000001;

    Inventory() = default;
    Inventory(const Inventory &) = delete;
    Inventory &operator=(const Inventory &) = delete;

    // True while no portset and no switch was made.
    bool empty() const { return switches_.empty() && portsets_.empty(); }
    // Switches in the order of their creation, portsets by number, NICs in order.
    const std::map<int64_t, std::unique_ptr<Switch>> &switches() const { return switches_; }
    const std::map<uint32_t, std::unique_ptr<Portset>> &portsets() const { return portsets_; }
    const std::vector<std::unique_ptr<Nic>> &nics() const { return nics_; }
    size_t portCount() const { return ports_.size(); }
    // The number of the next port to be made; no number is given out twice.
    uint32_t nextPort() const { return nextPort_; }

    Switch *findSwitch(std::string_view id) const;
    // The first switch whose alias begins with the same kMaxAlias characters.
    Switch *findAlias(std::string_view alias) const;
    // By alias, or else by identifier.
    Switch *findByName(std::string_view name) const;
    Portset *findPortset(std::string_view name) const;
    Port *findPort(uint32_t number) const;
    Port *findPort(std::string_view switchId, std::string_view portId) const;
    Nic *findNic(std::string_view name) const;
    // The port of the switch that this NIC serves; null for no such NIC, or one that serves none of them.
    Port *findServedBy(const Switch &sw, std::string_view nic) const;
    // The bound NICs of a switch in the order of its uplink list.
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
    // To be called before and after the alias of a switch changes.
    void eraseAlias(Switch &sw);
    void insertAlias(Switch &sw);
    void keepFrom(uint32_t nextPort) { nextPort_ = std::max(nextPort_, nextPort); }

    // Whatever has properties takes them from here.
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

// The number behind the last one of a list that is sorted by number.
template <typename Number, typename Entity>
Number numberAfter(const std::map<Number, std::unique_ptr<Entity>> &entities) {
    return entities.empty() ? Number{1} : entities.rbegin()->first + 1;
}

}  // namespace qvs::kernel
