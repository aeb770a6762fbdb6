// SPDX-License-Identifier: Apache-2.0
// Reads, sets and clears properties.
#include "daemon/model/properties.h"

#include "daemon/model/health_check.h"

namespace qvs::kernel {

const PropertyList *Properties::listOf(const Place &place) const {
    if (place.scope != Scope::Port) {
        const Switch *sw = inventory_.findSwitch(place.switchId);
        return sw == nullptr ? nullptr : &sw->properties(place.scope);
    }
    const Port *port = inventory_.findPort(place.switchId, place.portId);
    return port == nullptr ? nullptr : &port->properties;
}

PropertyRef Properties::stored(const Place &place, std::string_view key) const {
    const PropertyList *list = listOf(place);
    const Property *found = list == nullptr ? nullptr : list->find(key);
    return found == nullptr ? nullptr : found->shared_from_this();
}

Status Properties::get(const Place &place, std::string_view key, std::string *value) const {
    if (key.empty()) return Status::BadParameter;
    const Port *port =
        place.scope == Scope::Port ? inventory_.findPort(place.switchId, place.portId) : nullptr;
    if (port != nullptr && key == kPortStatusKey && port->statusFrom == Port::StatusFrom::Kernel) {
        *value = port->statusRecord();
        return Status::Ok;
    }
    const PropertyList *list = listOf(place);
    if (const Property *found = list == nullptr ? nullptr : list->find(key)) {
        *value = found->value;
        return Status::Ok;
    }
    std::optional<std::string> result;
    if (port != nullptr) result = checkResult(inventory_, *port, key);
    if (!result) return Status::NotFound;
    *value = std::move(*result);
    return Status::Ok;
}

Status Properties::change(const Place &place, std::string_view key, const PropertyView *property) {
    if (key.empty() || key.find('\0') != std::string_view::npos) return Status::BadParameter;
    Switch *sw = inventory_.findSwitch(place.switchId);
    if (sw == nullptr) return Status::NotFound;
    if (place.scope != Scope::Port) return changeOfSwitch(*sw, place.scope, key, property);
    Port *port = sw->port(place.portId);
    return port == nullptr ? Status::NotFound : changeOfPort(*port, key, property);
}

// Allocates what the change needs, because nothing may fail once the database has it.
PropertyRef Properties::prepared(PropertyList &list, const PropertyView *property) {
    if (property == nullptr) return nullptr;
    list.reserveOne();
    return inventory_.properties.intern(*property);
}

Status Properties::changeOfSwitch(Switch &sw, Scope scope, std::string_view key,
                                  const PropertyView *property) {
    PropertyList &list = sw.properties(scope);
    if (property == nullptr && list.find(key) == nullptr) return Status::NotFound;

    const bool isUplinks = scope == Scope::Host && key == kUplinkPortsKey;
    const bool isAlias = scope == Scope::Global && key == kAliasKey;
    std::vector<std::string> uplinks;
    if (isUplinks && property != nullptr) uplinks = parseUplinkPorts(property->value);
    Bindings bindings;
    if (isUplinks && sw.portset != nullptr) bindings = uplinks_.plan(sw, uplinks);
    PropertyRef ready = prepared(list, property);

    Transaction transaction(store_);
    if (property != nullptr) {
        store_.run(kSetSwitchProperty, sw.row, static_cast<uint32_t>(scope), key, property->value,
                   property->type);
    } else {
        store_.run(kRemoveSwitchProperty, sw.row, static_cast<uint32_t>(scope), key);
    }
    uplinks_.store(bindings);
    transaction.commit();

    if (isAlias) inventory_.eraseAlias(sw);
    if (property != nullptr) {
        list.set(std::move(ready));
    } else {
        list.clear(key);
    }
    if (isAlias) inventory_.insertAlias(sw);
    if (isUplinks) sw.setUplinks(std::move(uplinks));
    uplinks_.apply(bindings);
    if (isUplinks || key == kCheckDeployKey) {
        changes_.all();
    } else {
        changes_.properties(sw);
    }
    return Status::Ok;
}

Status Properties::changeOfPort(Port &port, std::string_view key, const PropertyView *property) {
    const bool isStatus = key == kPortStatusKey;
    const bool fromKernel = isStatus && port.statusFrom == Port::StatusFrom::Kernel;
    if (property == nullptr && !fromKernel && port.properties.find(key) == nullptr) {
        // The kernel provides the results of a check, so clearing one has no effect.
        return checkResult(inventory_, port, key) ? Status::Ok : Status::NotFound;
    }

    const bool isBlock = key == kPortBlockKey;
    PropertyRef ready = prepared(port.properties, property);
    Transaction transaction(store_);
    if (property != nullptr) {
        store_.run(kSetPortProperty, port.number, key, property->value, property->type);
    } else {
        store_.run(kSetPortProperty, port.number, key, nullptr, 0u);
    }
    if (isBlock) storeStatusReturn(store_, port);
    transaction.commit();

    port.changed = true;
    if (isStatus) port.statusFrom = Port::StatusFrom::Client;
    if (property != nullptr) {
        port.set(std::move(ready));
    } else {
        port.clear(key);
    }
    if (isBlock) port.returnStatus();
    changes_.properties(port);
    return Status::Ok;
}

}  // namespace qvs::kernel
