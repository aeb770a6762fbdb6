// The model's changes: validate, store in one transaction, apply.
#include "daemon/model/model.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>

#include "daemon/model/health_check.h"
#include "daemon/model/stored_properties.h"

namespace qvs::kernel {

namespace {

bool validName(std::string_view name, size_t maximum) {
    return !name.empty() && name.size() <= maximum && name.find('\0') == std::string_view::npos;
}

}  // namespace

// The count is trusted as far as the value reaches.
std::vector<std::string> parseUplinkPorts(std::string_view value) {
    constexpr size_t kEntry = 48;
    uint32_t count = 0;
    if (value.size() < sizeof count) return {};
    std::memcpy(&count, value.data(), sizeof count);
    value.remove_prefix(sizeof count);
    std::vector<std::string> names;
    for (; count != 0 && value.size() >= kEntry; --count, value.remove_prefix(kEntry)) {
        names.emplace_back(untilNul(value.substr(0, kEntry)));
    }
    return names;
}

void Port::set(PropertyRef property) {
    if (property->key == kPortBlockKey) blocked = untilNul(property->value) == "true";
    properties.set(std::move(property));
}

void Port::clear(std::string_view key) {
    if (key == kPortBlockKey) blocked = false;
    properties.clear(key);
}

uint32_t Port::flags() const {
    return (inUse() ? kPortInUse : 0) | (linkUp() ? kPortLinkUp : 0) | (blocked ? kPortBlocked : 0);
}

std::string Port::statusRecord() const {
    constexpr size_t kNumberAt = 16;
    constexpr size_t kClientAt = 20;
    std::string record(kClientAt, '\0');
    const uint64_t bits = flags();
    std::memcpy(record.data(), &bits, sizeof bits);
    std::memcpy(record.data() + kNumberAt, &number, sizeof number);
    record.append(clientName()).push_back('\0');
    return record;
}

Port *Switch::port(std::string_view portId) const {
    const auto found = portsById.find(portId);
    return found == portsById.end() ? nullptr : found->second;
}

Switch *Model::findSwitch(std::string_view id) const {
    const auto found = switchesById_.find(id);
    return found == switchesById_.end() ? nullptr : found->second;
}

Switch *Model::findAlias(std::string_view alias) const {
    const auto found = switchesByAlias_.find(std::string(alias.substr(0, kMaxAlias)));
    return found == switchesByAlias_.end() ? nullptr : found->second.front();
}

Portset *Model::findPortset(std::string_view name) const {
    const auto found = portsetsByName_.find(name);
    return found == portsetsByName_.end() ? nullptr : found->second;
}

Port *Model::findPort(uint32_t number) const {
    const auto found = ports_.find(number);
    return found == ports_.end() ? nullptr : found->second;
}

Nic *Model::findNic(std::string_view name) const {
    const auto found =
        std::find_if(nics_.begin(), nics_.end(), [&](const auto &nic) { return nic->name == name; });
    return found == nics_.end() ? nullptr : found->get();
}

void Model::insertAlias(Switch &sw) {
    if (sw.global.find(kAliasKey) == nullptr) return;
    auto &same = switchesByAlias_[std::string(sw.alias().substr(0, kMaxAlias))];
    const auto older = [](const Switch *a, const Switch *b) { return a->row < b->row; };
    same.insert(std::upper_bound(same.begin(), same.end(), &sw, older), &sw);
}

void Model::eraseAlias(Switch &sw) {
    const auto found = switchesByAlias_.find(std::string(sw.alias().substr(0, kMaxAlias)));
    if (found == switchesByAlias_.end()) return;
    std::erase(found->second, &sw);
    if (found->second.empty()) switchesByAlias_.erase(found);
}

Status Model::addSwitch(std::string_view id, std::string_view className, uint32_t maxPorts,
                        uint32_t version) {
    if (!validName(id, kMaxSwitchId)) return Status::BadParameter;
    if (findSwitch(id) != nullptr) return Status::Exists;

    auto sw = std::make_unique<Switch>();
    sw->row = switches_.empty() ? 1 : switches_.rbegin()->first + 1;
    sw->id = id;
    sw->className = untilNul(className);
    sw->maxPorts = maxPorts;
    sw->version = version;
    Transaction transaction(store_);
    store_.run(Sql::AddSwitch, sw->row, std::string_view(sw->id), std::string_view(sw->className), maxPorts,
               version);
    transaction.commit();

    switchesById_.emplace(sw->id, sw.get());
    switches_.emplace(sw->row, std::move(sw));
    changed();
    return Status::Ok;
}

Status Model::associate(std::string_view id) {
    Switch *sw = findSwitch(id);
    if (sw == nullptr) return Status::NotFound;
    if (sw->portset != nullptr) return Status::Busy;
    Portset *portset = findPortset(sw->host.text(kPortsetKey));
    if (portset == nullptr) return Status::NotFound;
    if (portset->owner != nullptr) return Status::Busy;

    const Bindings bindings = planBindings(*sw, sw->uplinks, numbersOf(*sw));
    Transaction transaction(store_);
    store_.run(Sql::SetSwitchPortset, sw->row, portset->number);
    storeBindings(bindings);
    transaction.commit();

    sw->portset = portset;
    portset->owner = sw;
    applyBindings(bindings);
    changed();
    return Status::Ok;
}

Status Model::dissociate(std::string_view id) {
    Switch *sw = findSwitch(id);
    if (sw == nullptr || sw->portset == nullptr) return Status::NotFound;

    const Bindings bindings = planBindings(*sw, {}, numbersOf(*sw));
    Transaction transaction(store_);
    store_.run(Sql::SetSwitchPortset, sw->row, 0u);
    storeBindings(bindings);
    transaction.commit();

    sw->portset->owner = nullptr;
    sw->portset = nullptr;
    applyBindings(bindings);
    changed();
    return Status::Ok;
}

void Model::removeStoredPort(const Port &port) {
    store_.run(Sql::RemovePort, port.number);
    if (port.changed) store_.run(Sql::RemovePortProperties, port.number);
}

Status Model::removeSwitch(std::string_view id) {
    Switch *sw = findSwitch(id);
    if (sw == nullptr) return Status::NotFound;
    if (sw->portset != nullptr) return Status::Busy;

    Transaction transaction(store_);
    for (const auto &[number, port] : sw->ports)
        removeStoredPort(*port);
    if (!sw->ports.empty()) store_.run(Sql::SetNextPort, nextPort_);
    store_.run(Sql::RemoveSwitchProperties, sw->row);
    store_.run(Sql::RemoveSwitch, sw->row);
    transaction.commit();

    eraseAlias(*sw);
    for (const auto &[number, port] : sw->ports)
        ports_.erase(number);
    switchesById_.erase(sw->id);
    switches_.erase(sw->row);
    changed();
    return Status::Ok;
}

Port &Model::insertPort(Switch &sw, uint32_t number, std::string_view id) {
    auto port = std::make_unique<Port>();
    port->number = number;
    port->owner = &sw;
    port->id = id;
    ports_.emplace(number, port.get());
    sw.portsById.emplace(port->id, port.get());
    return *sw.ports.emplace_hint(sw.ports.end(), number, std::move(port))->second;
}

Status Model::addPort(std::string_view switchId, std::string_view portId,
                      const std::vector<PropertyView> &properties) {
    Switch *sw = findSwitch(switchId);
    if (sw == nullptr) return Status::NotFound;
    if (!validName(portId, kMaxPortId)) return Status::BadParameter;
    if (sw->port(portId) != nullptr) return Status::Exists;
    if (sw->ports.size() >= sw->maxPorts) return Status::LimitExceeded;

    const uint32_t number = nextPort_;
    Bindings bindings;
    if (sw->portset != nullptr && sw->uplinkSet.contains(std::string(portId))) {
        bindings = planBindings(*sw, sw->uplinks, [&, known = numbersOf(*sw)](std::string_view name) {
            return name == portId ? number : known(name);
        });
    }
    Transaction transaction(store_);
    store_.run(Sql::AddPort, number, sw->row, portId, std::string_view(packStored(properties)));
    storeBindings(bindings);
    transaction.commit();

    Port &port = insertPort(*sw, number, portId);
    for (const PropertyView &property : properties) {
        if (property.key != kPortStatusKey) port.set(pool_.intern(property));
    }
    ++nextPort_;
    applyBindings(bindings);
    changed();
    return Status::Ok;
}

Status Model::removePort(std::string_view switchId, std::string_view portId) {
    Switch *sw = findSwitch(switchId);
    Port *port = sw == nullptr ? nullptr : sw->port(portId);
    if (port == nullptr) return Status::NotFound;

    Bindings bindings;
    if (port->nic != nullptr) {
        bindings = planBindings(*sw, sw->uplinks, [&, known = numbersOf(*sw)](std::string_view name) {
            return name == portId ? 0 : known(name);
        });
    }
    Transaction transaction(store_);
    removeStoredPort(*port);
    // The highest number may just have gone from the table, and it is not to be given out again.
    store_.run(Sql::SetNextPort, nextPort_);
    storeBindings(bindings);
    transaction.commit();

    applyBindings(bindings);
    const uint32_t number = port->number;
    ports_.erase(number);
    sw->portsById.erase(port->id);
    sw->ports.erase(number);
    changed();
    return Status::Ok;
}

Status Model::property(const Place &place, std::string_view key, std::string *value) const {
    if (key.empty()) return Status::BadParameter;
    const Switch *sw = findSwitch(place.switchId);
    if (sw == nullptr) return Status::NotFound;
    if (place.scope == Scope::Port) {
        const Port *port = sw->port(place.portId);
        return port == nullptr ? Status::NotFound : portProperty(*port, key, value);
    }
    const Property *found = (place.scope == Scope::Global ? sw->global : sw->host).find(key);
    if (found == nullptr) return Status::NotFound;
    *value = found->value;
    return Status::Ok;
}

PropertyRef Model::sharedProperty(const Place &place, std::string_view key) const {
    const Switch *sw = findSwitch(place.switchId);
    if (sw == nullptr) return nullptr;
    const Port *port = place.scope == Scope::Port ? sw->port(place.portId) : nullptr;
    if (place.scope == Scope::Port && port == nullptr) return nullptr;
    const PropertyList &list = port != nullptr                ? port->properties
                               : place.scope == Scope::Global ? sw->global
                                                              : sw->host;
    const Property *found = list.find(key);
    return found == nullptr ? nullptr : found->shared_from_this();
}

Status Model::portProperty(const Port &port, std::string_view key, std::string *value) const {
    if (key == kPortStatusKey && port.statusFrom == Port::StatusFrom::Kernel) {
        *value = port.statusRecord();
        return Status::Ok;
    }
    if (const Property *found = port.properties.find(key)) {
        *value = found->value;
        return Status::Ok;
    }
    std::optional<std::string> result = checkResult(*this, port, key);
    if (!result) return Status::NotFound;
    *value = std::move(*result);
    return Status::Ok;
}

Status Model::setProperty(const Place &place, const PropertyView &property) {
    return changeProperty(place, property.key, &property);
}

Status Model::clearProperty(const Place &place, std::string_view key) {
    return changeProperty(place, key, nullptr);
}

Status Model::changeProperty(const Place &place, std::string_view key, const PropertyView *property) {
    if (key.empty() || key.find('\0') != std::string_view::npos) return Status::BadParameter;
    Switch *sw = findSwitch(place.switchId);
    if (sw == nullptr) return Status::NotFound;
    if (place.scope != Scope::Port) return changeSwitchProperty(*sw, place.scope, key, property);
    Port *port = sw->port(place.portId);
    return port == nullptr ? Status::NotFound : changePortProperty(*port, key, property);
}

Status Model::changeSwitchProperty(Switch &sw, Scope scope, std::string_view key,
                                   const PropertyView *property) {
    PropertyList &list = scope == Scope::Global ? sw.global : sw.host;
    if (property == nullptr && list.find(key) == nullptr) return Status::NotFound;

    const bool isUplinks = scope == Scope::Host && key == kUplinkPortsKey;
    const bool isAlias = scope == Scope::Global && key == kAliasKey;
    std::vector<std::string> uplinks;
    if (isUplinks && property != nullptr) uplinks = parseUplinkPorts(property->value);
    Bindings bindings;
    if (isUplinks && sw.portset != nullptr) bindings = planBindings(sw, uplinks, numbersOf(sw));

    Transaction transaction(store_);
    if (property != nullptr) {
        store_.run(Sql::SetSwitchProperty, sw.row, static_cast<uint32_t>(scope), key, property->value,
                   property->type);
    } else {
        store_.run(Sql::RemoveSwitchProperty, sw.row, static_cast<uint32_t>(scope), key);
    }
    storeBindings(bindings);
    transaction.commit();

    if (isAlias) eraseAlias(sw);
    if (property != nullptr) {
        list.set(pool_.intern(*property));
    } else {
        list.clear(key);
    }
    if (isAlias) insertAlias(sw);
    if (isUplinks) sw.setUplinks(std::move(uplinks));
    applyBindings(bindings);
    if (isUplinks || key == kCheckDeployKey) {
        changed();
    } else {
        touch(sw);
    }
    return Status::Ok;
}

Status Model::changePortProperty(Port &port, std::string_view key, const PropertyView *property) {
    const bool isStatus = key == kPortStatusKey;
    const bool fromKernel = isStatus && port.statusFrom == Port::StatusFrom::Kernel;
    if (property == nullptr && !fromKernel && port.properties.find(key) == nullptr) {
        // A result of a check that is cleared is found again at once.
        return checkResult(*this, port, key) ? Status::Ok : Status::NotFound;
    }

    const bool isBlock = key == kPortBlockKey;
    Transaction transaction(store_);
    if (property != nullptr) {
        store_.run(Sql::SetPortProperty, port.number, key, property->value, property->type);
    } else {
        store_.run(Sql::SetPortProperty, port.number, key, nullptr, 0u);
    }
    if (isBlock) storeStatusReturn(port);
    transaction.commit();

    port.changed = true;
    if (isStatus) port.statusFrom = Port::StatusFrom::Client;
    if (property != nullptr) {
        port.set(pool_.intern(*property));
    } else {
        port.clear(key);
    }
    if (isBlock) applyStatusReturn(port);
    touch(port);
    return Status::Ok;
}

void Model::changed() {
    ++generation_;
    touched_ = {};
}

void Model::touch(const Switch &sw) {
    ++generation_;
    if (!touched_.anything) touched_.switches.push_back(&sw);
    limitTouched();
}

void Model::touch(const Port &port) {
    ++generation_;
    if (!touched_.anything) touched_.ports.push_back(&port);
    limitTouched();
}

// To look at so many one by one is no less than to look at everything.
void Model::limitTouched() {
    constexpr size_t kFew = 16;
    if (touched_.switches.size() + touched_.ports.size() > kFew + ports_.size() / 4) changed();
}

void Model::storeStatusReturn(const Port &port) {
    if (port.statusFrom == Port::StatusFrom::Client) {
        store_.run(Sql::DropPortProperty, port.number, std::string_view(kPortStatusKey));
    }
}

void Model::applyStatusReturn(Port &port) {
    port.clear(kPortStatusKey);
    port.statusFrom = Port::StatusFrom::Kernel;
}

Status Model::setClient(Port &port, std::string_view name, bool link) {
    if (port.nic != nullptr) return Status::Busy;
    if (name.find('\0') != std::string_view::npos) return Status::BadParameter;
    Transaction transaction(store_);
    store_.run(Sql::SetPortClient, port.number, name, link);
    storeStatusReturn(port);
    transaction.commit();

    port.client = name;
    port.clientLink = link;
    applyStatusReturn(port);
    changed();
    return Status::Ok;
}

Status Model::addPortset(std::string_view name, uint32_t capacity) {
    if (!validName(name, kMaxPortsetName) || capacity == 0) return Status::BadParameter;
    if (name.find('/') != std::string_view::npos) return Status::BadParameter;
    if (findPortset(name) != nullptr) return Status::Exists;

    auto portset = std::make_unique<Portset>();
    portset->number = portsets_.empty() ? 1 : portsets_.rbegin()->first + 1;
    portset->name = name;
    portset->capacity = capacity;
    Transaction transaction(store_);
    store_.run(Sql::AddPortset, portset->number, name, capacity, portset->mtu);
    transaction.commit();

    portsetsByName_.emplace(portset->name, portset.get());
    portsets_.emplace(portset->number, std::move(portset));
    changed();
    return Status::Ok;
}

Status Model::removePortset(std::string_view name) {
    const Portset *portset = findPortset(name);
    if (portset == nullptr) return Status::NotFound;
    if (portset->owner != nullptr) return Status::Busy;

    const uint32_t number = portset->number;
    Transaction transaction(store_);
    store_.run(Sql::RemovePortset, number);
    transaction.commit();

    portsetsByName_.erase(portset->name);
    portsets_.erase(number);
    changed();
    return Status::Ok;
}

Status Model::setPortsetMtu(Portset &portset, uint32_t mtu) {
    if (mtu < kMinMtu || mtu > kMaxMtu) return Status::BadParameter;
    Transaction transaction(store_);
    store_.run(Sql::SetPortsetMtu, portset.number, mtu);
    transaction.commit();
    portset.mtu = mtu;
    changed();
    return Status::Ok;
}

void Model::storeRow(const AnyTable &table, std::string_view key, std::string_view value) {
    store_.run(Sql::SetDeviceValue, std::string_view(table.name()), key, value);
}

void Model::removeStoredRow(const AnyTable &table, std::string_view key) {
    store_.run(Sql::RemoveDeviceValue, std::string_view(table.name()), key);
}

}  // namespace qvs::kernel
