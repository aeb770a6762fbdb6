// SPDX-License-Identifier: Apache-2.0
// Reads the inventory from the store.
#include <cstring>

#include <fmt/format.h>

#include "daemon/model/model.h"
#include "daemon/model/stored_properties.h"

namespace qvs::kernel {

namespace {

class Loader {
  public:
    Loader(Store &store, Inventory &inventory) : store_(store), inventory_(inventory) {}

    void load() {
        // Each list refers only to the lists before it.
        each(kAllPortsets, &Loader::addPortset);
        each(kAllSwitches, &Loader::addSwitch);
        each(kAllSwitchProperties, &Loader::addSwitchProperty);
        for (const auto &[row, sw] : inventory_.switches()) {
            inventory_.insertAlias(*sw);
            if (const Property *list = sw->host.find(kUplinkPortsKey))
                sw->setUplinks(parseUplinkPorts(list->value));
        }
        store_.each(kGetNextPort, [this](const Row &row) { inventory_.keepFrom(row.u32(0)); });
        each(kAllPorts, &Loader::addPort);
        each(kAllPortProperties, &Loader::changePortProperty);
        each(kAllNics, &Loader::addNic);
    }

  private:
    void each(const Sql &sql, void (Loader::*add)(const Row &)) {
        store_.each(sql, [&](const Row &row) { (this->*add)(row); });
    }

    // Returns the object that a row refers to. Throws if it does not exist.
    template <typename Entity, typename Id>
    Entity &require(Entity *found, const char *complaint, const Id &id) {
        if (found == nullptr) refuseDamaged(store_, fmt::format(fmt::runtime(complaint), id));
        return *found;
    }
    template <typename Number, typename Entity>
    static Entity *find(const std::map<Number, std::unique_ptr<Entity>> &entities, Number number) {
        const auto found = entities.find(number);
        return found == entities.end() ? nullptr : found->second.get();
    }

    void addPortset(const Row &row) {
        auto portset = std::make_unique<Portset>();
        portset->number = row.u32(0);
        portset->name = row.text(1);
        portset->capacity = row.u32(2);
        portset->mtu = row.u32(3);
        inventory_.insert(std::move(portset));
    }

    void addSwitch(const Row &row) {
        auto sw = std::make_unique<Switch>();
        sw->row = row.integer(0);
        sw->id = row.text(1);
        sw->className = row.text(2);
        sw->maxPorts = row.u32(3);
        sw->version = row.u32(4);
        if (const uint32_t number = row.u32(5); number != 0) {
            sw->portset = &require(find(inventory_.portsets(), number), "portset {} is missing", number);
            sw->portset->owner = sw.get();
        }
        inventory_.insert(std::move(sw));
    }

    void addSwitchProperty(const Row &row) {
        Switch &sw =
            require(find(inventory_.switches(), row.integer(0)), "switch {} is missing", row.integer(0));
        sw.properties(static_cast<Scope>(row.u32(1)))
            .set(inventory_.properties.intern({row.bytes(2), row.bytes(3), row.u32(4)}));
    }

    void addPort(const Row &row) {
        const uint32_t number = row.u32(0);
        if (owner_ == nullptr || owner_->row != row.integer(1)) {
            owner_ = &require(find(inventory_.switches(), row.integer(1)), "port {:#x} belongs to no switch",
                              number);
        }
        Port &port = inventory_.insertPort(*owner_, number, row.bytes(2));
        port.client = row.text(3);
        port.clientLink = row.integer(4) != 0;
        // Most ports are created with the same properties as the one before.
        if (row.bytes(5) != packed_) {
            packed_ = row.bytes(5);
            unpacked_.clear();
            const bool whole = unpackStored(packed_, [&](const PropertyView &property) {
                if (property.key != kPortStatusKey)
                    unpacked_.push_back(inventory_.properties.intern(property));
            });
            if (!whole)
                refuseDamaged(store_, fmt::format("the properties of port {:#x} are damaged", number));
        }
        for (const PropertyRef &property : unpacked_)
            port.set(property);
    }

    void changePortProperty(const Row &row) {
        Port &port = require(inventory_.findPort(row.u32(0)), "port {:#x} is missing", row.u32(0));
        const std::string_view key = row.bytes(1);
        port.changed = true;
        if (key == kPortStatusKey) port.statusFrom = Port::StatusFrom::Client;
        if (row.null(2)) {
            port.clear(key);
        } else {
            // The views of both columns are valid until the next row.
            port.set(inventory_.properties.intern({key, row.bytes(2), row.u32(3)}));
        }
    }

    void addNic(const Row &row) {
        auto nic = std::make_unique<Nic>();
        nic->name = row.text(0);
        nic->link = row.integer(1) != 0;
        nic->admin = row.integer(2) != 0;
        nic->speedMbps = row.u32(3);
        nic->mtu = row.u32(4);
        const std::string_view mac = row.bytes(5);
        if (mac.size() != nic->mac.size())
            refuseDamaged(store_, fmt::format("the address of NIC {} is damaged", nic->name));
        std::memcpy(nic->mac.data(), mac.data(), mac.size());
        if (const uint32_t number = row.u32(6); number != 0) {
            nic->port = &require(inventory_.findPort(number), "NIC {} serves no port", nic->name);
            nic->port->nic = nic.get();
        }
        inventory_.insert(std::move(nic));
    }

    Store &store_;
    Inventory &inventory_;
    // Of the last port: its owner, and the properties that it was created with.
    Switch *owner_ = nullptr;
    std::string packed_;
    std::vector<PropertyRef> unpacked_;
};

}  // namespace

void refuseDamaged(const Store &store, const std::string &what) {
    store.refuse("the database is inconsistent: " + what);
}

void loadInventory(Store &store, Inventory *inventory) {
    Loader(store, *inventory).load();
}

}  // namespace qvs::kernel
