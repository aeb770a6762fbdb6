// SPDX-License-Identifier: Apache-2.0
#include "config/document/document.h"

#include <algorithm>

namespace qvs::config {
namespace {

template <typename Items, typename Matches>
auto pointerTo(const Items &items, Matches matches) {
    auto found = std::find_if(items.begin(), items.end(), matches);
    return found == items.end() ? nullptr : &*found;
}

}  // namespace

const Value *Part::find(const Setting &setting) const {
    const auto *found = pointerTo(settings, [&](const auto &item) { return item.setting == &setting; });
    return found == nullptr ? nullptr : &found->value;
}

const RawProperty *Part::findProperty(std::string_view key) const {
    return pointerTo(properties, [&](const RawProperty &property) { return property.key == key; });
}

bool Part::names(const Setting &setting) const {
    return find(setting) != nullptr || std::ranges::any_of(setting.keys, [&](const char *key) {
               return key != nullptr && findProperty(key) != nullptr;
           });
}

std::set<std::string_view> SwitchEntry::portIds() const {
    std::set<std::string_view> ids;
    for (const PortEntry &port : ports)
        ids.insert(port.id);
    if (uplinks)
        for (const UplinkEntry &uplink : *uplinks)
            ids.insert(uplink.port);
    return ids;
}

// Entries are sorted, so that documents with many ports are compared quickly.
const PortEntry *SwitchEntry::findPort(std::string_view portId) const {
    auto found = std::lower_bound(
        ports.begin(), ports.end(), portId,
        [](const PortEntry &port, std::string_view sought) { return std::string_view(port.id) < sought; });
    return found == ports.end() || found->id != portId ? nullptr : &*found;
}

const SwitchEntry *Document::findSwitch(std::string_view alias) const {
    return pointerTo(switches, [&](const SwitchEntry &entry) { return entry.alias == alias; });
}

}  // namespace qvs::config
