// SPDX-License-Identifier: Apache-2.0
// Finds, adds and removes objects.
#include "daemon/model/inventory.h"

#include <algorithm>

namespace qvs::kernel {

namespace {

template <typename Index, typename Key>
typename Index::mapped_type findIn(const Index &index, const Key &key) {
    const auto found = index.find(key);
    return found == index.end() ? nullptr : found->second;
}

std::string aliasKey(std::string_view alias) {
    return std::string(alias.substr(0, kMaxAlias));
}

}  // namespace

Switch *Inventory::findSwitch(std::string_view id) const {
    return findIn(switchesById_, id);
}

Switch *Inventory::findAlias(std::string_view alias) const {
    const auto found = switchesByAlias_.find(aliasKey(alias));
    return found == switchesByAlias_.end() ? nullptr : found->second.front();
}

Switch *Inventory::findByName(std::string_view name) const {
    Switch *sw = findAlias(name);
    return sw != nullptr ? sw : findSwitch(name);
}

Portset *Inventory::findPortset(std::string_view name) const {
    return findIn(portsetsByName_, name);
}

Port *Inventory::findPort(uint32_t number) const {
    return findIn(ports_, number);
}

Port *Inventory::findPort(std::string_view switchId, std::string_view portId) const {
    const Switch *sw = findSwitch(switchId);
    return sw == nullptr ? nullptr : sw->port(portId);
}

Nic *Inventory::findNic(std::string_view name) const {
    const auto found =
        std::find_if(nics_.begin(), nics_.end(), [&](const auto &nic) { return nic->name == name; });
    return found == nics_.end() ? nullptr : found->get();
}

Port *Inventory::findServedBy(const Switch &sw, std::string_view nic) const {
    const Nic *found = findNic(nic);
    return found != nullptr && found->port != nullptr && found->port->owner == &sw ? found->port : nullptr;
}

std::vector<const Nic *> Inventory::boundNics(const Switch &sw) const {
    std::vector<const Nic *> bound;
    for (const auto &nic : nics_) {
        if (nic->port != nullptr && nic->port->owner == &sw) bound.push_back(nic.get());
    }
    const auto place = [&](const Nic *nic) {
        return std::find(sw.uplinks.begin(), sw.uplinks.end(), nic->port->id);
    };
    std::sort(bound.begin(), bound.end(), [&](const Nic *a, const Nic *b) { return place(a) < place(b); });
    return bound;
}

void Inventory::clear() {
    switchesById_.clear();
    switchesByAlias_.clear();
    portsetsByName_.clear();
    ports_.clear();
    nics_.clear();
    switches_.clear();
    portsets_.clear();
    nextPort_ = kFirstPort;
}

void Inventory::insert(std::unique_ptr<Switch> sw) {
    switchesById_.emplace(sw->id, sw.get());
    switches_.emplace(sw->row, std::move(sw));
}

void Inventory::erase(Switch &sw) {
    eraseAlias(sw);
    for (const auto &[number, port] : sw.ports)
        ports_.erase(number);
    switchesById_.erase(sw.id);
    switches_.erase(sw.row);
}

void Inventory::insert(std::unique_ptr<Portset> portset) {
    portsetsByName_.emplace(portset->name, portset.get());
    portsets_.emplace(portset->number, std::move(portset));
}

void Inventory::erase(Portset &portset) {
    portsetsByName_.erase(portset.name);
    portsets_.erase(uint32_t{portset.number});
}

Port &Inventory::insertPort(Switch &sw, uint32_t number, std::string_view id) {
    auto port = std::make_unique<Port>();
    port->number = number;
    port->owner = &sw;
    port->id = id;
    ports_.emplace(number, port.get());
    sw.portsById.insert(*port);
    keepFrom(number + 1);
    return *sw.ports.emplace_hint(sw.ports.end(), number, std::move(port))->second;
}

void Inventory::erase(Port &port) {
    ports_.erase(port.number);
    port.owner->portsById.erase(port);
    port.owner->ports.erase(uint32_t{port.number});
}

void Inventory::insertAlias(Switch &sw) {
    if (sw.global.find(kAliasKey) == nullptr) return;
    auto &same = switchesByAlias_[aliasKey(sw.alias())];
    const auto older = [](const Switch *a, const Switch *b) { return a->row < b->row; };
    same.insert(std::upper_bound(same.begin(), same.end(), &sw, older), &sw);
}

void Inventory::eraseAlias(Switch &sw) {
    const auto found = switchesByAlias_.find(aliasKey(sw.alias()));
    if (found == switchesByAlias_.end()) return;
    std::erase(found->second, &sw);
    if (found->second.empty()) switchesByAlias_.erase(found);
}

}  // namespace qvs::kernel
