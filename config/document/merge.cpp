// SPDX-License-Identifier: Apache-2.0
#include "config/document/merge.h"

#include <algorithm>
#include <utility>

#include "config/document/diff.h"
#include "config/document/places.h"

namespace qvs::config {
namespace {

// The entry of this name in a sorted list, which is made if it is not there.
template <typename Entry>
Entry &entryOf(std::vector<Entry> &entries, std::string Entry::*name, const std::string &wanted) {
    const auto place = std::ranges::lower_bound(entries, wanted, {}, name);
    if (place != entries.end() && (*place).*name == wanted) return *place;
    Entry made;
    made.*name = wanted;
    return *entries.insert(place, std::move(made));
}

template <typename Value>
void replace(std::optional<Value> &value, const std::optional<Value> &with) {
    if (with) value = with;
}

// Removes the settings and properties that the other part names, a setting also where it is stored as a
// property and the other way round.
void removeNamed(Part &part, const Part &other, Scope scope) {
    std::erase_if(part.settings, [&](const SettingEntry &entry) { return other.names(*entry.setting); });
    std::erase_if(part.properties, [&](const RawProperty &property) {
        const Setting *setting = settingOfKey(scope, property.key);
        return other.findProperty(property.key) != nullptr || (setting != nullptr && other.names(*setting));
    });
}

void add(Part &part, const Part &other, Scope scope) {
    removeNamed(part, other, scope);
    part.settings.insert(part.settings.end(), other.settings.begin(), other.settings.end());
    part.properties.insert(part.properties.end(), other.properties.begin(), other.properties.end());
    sortPart(part);
}

void add(PortEntry &port, const PortEntry &other) {
    replace(port.connectId, other.connectId);
    replace(port.externalId, other.externalId);
    replace(port.blocked, other.blocked);
    add(port.part, other.part, Scope::Port);
}

void add(SwitchEntry &sw, const SwitchEntry &other) {
    if (sw.mark.line == 0) sw.mark = other.mark;
    replace(sw.id, other.id);
    replace(sw.portset, other.portset);
    replace(sw.version, other.version);
    replace(sw.opaque, other.opaque);
    replace(sw.maxPorts, other.maxPorts);
    replace(sw.uplinks, other.uplinks);
    add(sw.global, other.global, Scope::Global);
    add(sw.host, other.host, Scope::Host);
    for (const PortEntry &port : other.ports)
        add(entryOf(sw.ports, &PortEntry::id, port.id), port);
}

}  // namespace

void overlay(Document &onto, const Document &with) {
    for (const SwitchEntry &sw : with.switches)
        add(entryOf(onto.switches, &SwitchEntry::alias, sw.alias), sw);
}

void subtract(Document &from, const Document &what) {
    for (SwitchEntry &sw : from.switches) {
        const SwitchEntry *other = what.findSwitch(sw.alias);
        if (other == nullptr) continue;
        removeNamed(sw.global, other->global, Scope::Global);
        removeNamed(sw.host, other->host, Scope::Host);
        for (PortEntry &port : sw.ports)
            if (const PortEntry *named = other->findPort(port.id))
                removeNamed(port.part, named->part, Scope::Port);
    }
}

std::vector<std::string> disagreements(const Document &one, const Document &other) {
    std::vector<std::string> paths;
    for (const Change &change : compare(one, other, false))
        if (change.kind == Change::Kind::Changed) paths.push_back(change.path());
    return paths;
}

}  // namespace qvs::config
