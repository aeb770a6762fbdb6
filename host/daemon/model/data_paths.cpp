// SPDX-License-Identifier: Apache-2.0
// Creates and removes portsets, switches and ports.
#include "daemon/model/data_paths.h"

#include "daemon/model/stored_properties.h"

namespace qvs::kernel {

Status DataPaths::addPortset(std::string_view name, uint32_t capacity) {
    if (!isNodeName(name, kMaxPortsetName) || capacity == 0) return Status::BadParameter;
    if (inventory_.findPortset(name) != nullptr) return Status::Exists;

    auto portset = std::make_unique<Portset>();
    portset->number = numberAfter(inventory_.portsets());
    portset->name = name;
    portset->capacity = capacity;
    store_.change(kAddPortset, portset->number, name, capacity, portset->mtu);

    inventory_.insert(std::move(portset));
    changes_.all();
    return Status::Ok;
}

Status DataPaths::removePortset(std::string_view name) {
    Portset *portset = inventory_.findPortset(name);
    if (portset == nullptr) return Status::NotFound;
    if (portset->owner != nullptr) return Status::Busy;

    store_.change(kRemovePortset, portset->number);

    inventory_.erase(*portset);
    changes_.all();
    return Status::Ok;
}

Status DataPaths::setPortsetMtu(Portset &portset, uint32_t mtu) {
    if (!isMtu(mtu)) return Status::BadParameter;
    store_.change(kSetPortsetMtu, portset.number, mtu);
    portset.mtu = mtu;
    changes_.all();
    return Status::Ok;
}

Status DataPaths::addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts,
                            uint32_t version) {
    if (!isName(id, kMaxSwitchId)) return Status::BadParameter;
    if (inventory_.findSwitch(id) != nullptr) return Status::Exists;

    auto sw = std::make_unique<Switch>();
    sw->row = numberAfter(inventory_.switches());
    sw->id = id;
    sw->className = untilNul(className);
    sw->maxPorts = maxPorts;
    sw->version = version;
    store_.change(kAddSwitch, sw->row, std::string_view(sw->id), std::string_view(sw->className), maxPorts,
                  version);

    inventory_.insert(std::move(sw));
    changes_.all();
    return Status::Ok;
}

// Associates a switch with a portset, or dissociates it. NICs are bound only while a switch has a portset.
void DataPaths::bind(Switch &sw, Portset &portset, bool associated) {
    const Bindings bindings = uplinks_.plan(sw, associated ? sw.uplinks : std::vector<std::string>{});
    Transaction transaction(store_);
    store_.run(kSetSwitchPortset, sw.row, associated ? portset.number : 0u);
    uplinks_.store(bindings);
    transaction.commit();

    sw.portset = associated ? &portset : nullptr;
    portset.owner = associated ? &sw : nullptr;
    uplinks_.apply(bindings);
    changes_.all();
}

Status DataPaths::associate(std::string_view id) {
    Switch *sw = inventory_.findSwitch(id);
    if (sw == nullptr) return Status::NotFound;
    if (sw->portset != nullptr) return Status::Busy;
    Portset *portset = inventory_.findPortset(sw->host.text(kPortsetKey));
    if (portset == nullptr) return Status::NotFound;
    if (portset->owner != nullptr) return Status::Busy;
    bind(*sw, *portset, true);
    return Status::Ok;
}

Status DataPaths::dissociate(std::string_view id) {
    Switch *sw = inventory_.findSwitch(id);
    if (sw == nullptr || sw->portset == nullptr) return Status::NotFound;
    bind(*sw, *sw->portset, false);
    return Status::Ok;
}

Status DataPaths::removeSwitch(std::string_view id) {
    Switch *sw = inventory_.findSwitch(id);
    if (sw == nullptr) return Status::NotFound;
    if (sw->portset != nullptr) return Status::Busy;

    Transaction transaction(store_);
    for (const auto &[number, port] : sw->ports)
        removeStored(*port);
    if (!sw->ports.empty()) store_.run(kSetNextPort, inventory_.nextPort());
    store_.run(kRemoveSwitchProperties, sw->row);
    store_.run(kRemoveSwitch, sw->row);
    transaction.commit();

    inventory_.erase(*sw);
    changes_.all();
    return Status::Ok;
}

void DataPaths::removeStored(const Port &port) {
    store_.run(kRemovePort, port.number);
    if (port.changed) store_.run(kRemovePortProperties, port.number);
}

Status DataPaths::addPort(std::string_view switchId, std::string_view portId,
                          const std::vector<PropertyView> &properties) {
    Switch *sw = inventory_.findSwitch(switchId);
    if (sw == nullptr) return Status::NotFound;
    if (!isName(portId, kMaxPortId)) return Status::BadParameter;
    if (sw->port(portId) != nullptr) return Status::Exists;
    if (sw->ports.size() >= sw->maxPorts) return Status::LimitExceeded;

    const uint32_t number = inventory_.nextPort();
    Bindings bindings;
    if (sw->portset != nullptr && sw->uplinkSet.contains(std::string(portId)))
        bindings = uplinks_.planWith(*sw, portId, number);
    Transaction transaction(store_);
    store_.run(kAddPort, number, sw->row, portId, std::string_view(packStored(properties)));
    uplinks_.store(bindings);
    transaction.commit();

    Port &port = inventory_.insertPort(*sw, number, portId);
    for (const PropertyView &property : properties) {
        if (property.key != kPortStatusKey) port.set(inventory_.properties.intern(property));
    }
    uplinks_.apply(bindings);
    moved(port, bindings);
    return Status::Ok;
}

Status DataPaths::removePort(std::string_view switchId, std::string_view portId) {
    Port *port = inventory_.findPort(switchId, portId);
    if (port == nullptr) return Status::NotFound;

    Bindings bindings;
    if (port->nic != nullptr) bindings = uplinks_.planWith(*port->owner, portId, 0);
    Transaction transaction(store_);
    removeStored(*port);
    // Numbers are not reused, and the highest number may just have been removed from the table.
    store_.run(kSetNextPort, inventory_.nextPort());
    uplinks_.store(bindings);
    transaction.commit();

    uplinks_.apply(bindings);
    moved(*port, bindings);
    inventory_.erase(*port);
    return Status::Ok;
}

// Records that a port was added, or that it will be removed. Bindings concern other ports, too.
void DataPaths::moved(const Port &port, const Bindings &bindings) {
    if (bindings.empty()) {
        changes_.moved(port);
    } else {
        changes_.all();
    }
}

Status DataPaths::setClient(Port &port, std::string_view name, bool link) {
    if (port.nic != nullptr) return Status::Busy;
    if (name.find('\0') != std::string_view::npos) return Status::BadParameter;
    Transaction transaction(store_);
    store_.run(kSetPortClient, port.number, name, link);
    storeStatusReturn(store_, port);
    transaction.commit();

    port.client = name;
    port.clientLink = link;
    port.returnStatus();
    changes_.properties(port);
    return Status::Ok;
}

}  // namespace qvs::kernel
