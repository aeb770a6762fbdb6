// SPDX-License-Identifier: Apache-2.0
#include "config/apply/before.h"

#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>

#include "config/library/call.h"
#include "config/library/portset.h"

namespace qvs::config {
namespace {

// A port that is made again starts with the properties of class RUNTIME that it had, too.
constexpr uint32_t kKept = DVS_PROP_CONFIG | DVS_PROP_POLICY | DVS_PROP_RUNTIME;

PropertyBefore copyOf(const Property &property) {
    return {std::string(property.key), property.classes, Blob(property.value.begin(), property.value.end())};
}

void record(PartBefore &part, const Place &place, std::string_view key) {
    const bool known = part.whole || std::any_of(part.properties.begin(), part.properties.end(),
                                                 [&](const auto &kept) { return kept.key == key; });
    if (known) return;
    const std::optional<Property> stored = findProperty(place, key);
    part.properties.push_back(stored ? copyOf(*stored) : PropertyBefore{std::string(key), 0, std::nullopt});
}

PartBefore wholePart(const Place &place) {
    PartBefore part;
    part.whole = true;
    forEachProperty(place, [&](const Property &property) {
        if ((property.classes & kKept) != 0) part.properties.push_back(copyOf(property));
        return true;
    });
    return part;
}

std::optional<uint32_t> mtuOf(const std::string &alias) {
    int mtu = 0;
    if (call<VSDVS_GetMTU>(alias.c_str(), &mtu) != HYP_OK || mtu < 0) return std::nullopt;
    return static_cast<uint32_t>(mtu);
}

}  // namespace

std::string defaultSwitchId(std::string_view alias) {
    constexpr size_t kSize = 16;
    std::string id;
    for (size_t i = 0; i < kSize; i++) {
        const auto byte = static_cast<uint8_t>(i < std::min(alias.size(), kSize - 1) ? alias[i] : 0);
        id += fmt::format("{}{:02x}", i == 0 ? "" : i == kSize / 2 ? "-" : " ", byte);
    }
    return id;
}

bool isConfiguration(uint32_t classes) {
    return (classes & (DVS_PROP_CONFIG | DVS_PROP_POLICY)) != 0;
}

SwitchBefore &Recorder::entry(DVSSwitch *sw) {
    const std::string id(boundedText(DVS_SwitchId(sw), sizeof(SwitchIdString)));
    const auto [found, added] = switches_.try_emplace(id, before_.switches.size());
    if (added) {
        SwitchBefore entry;
        entry.id = id;
        entry.alias = findText({Scope::Global, sw}, QVS_KEY_ALIAS).value_or("");
        entry.portset = findText({Scope::Host, sw}, QVS_KEY_HOST_PORTSET).value_or(entry.alias);
        entry.opaque = findText({Scope::Global, sw}, QVS_KEY_OPAQUE) == "true";
        entry.version = DVS_Version(sw);
        entry.maxPorts = DVS_GetMaxPorts(sw);
        before_.switches.push_back(std::move(entry));
    }
    return before_.switches[found->second];
}

PortBefore &Recorder::portEntry(DVSSwitch *sw, const std::string &port) {
    SwitchBefore &of = entry(sw);
    const auto [found, added] = ports_[of.id].try_emplace(port, of.ports.size());
    if (added) of.ports.push_back({port, true, {}});
    return of.ports[found->second];
}

void Recorder::property(Scope scope, DVSSwitch *sw, const std::string &port, std::string_view key) {
    if (scope == Scope::Global) return record(entry(sw).global, {scope, sw}, key);
    if (scope == Scope::Host) return record(entry(sw).host, {scope, sw}, key);
    DVSPort *handle = lookUpPort(sw, port);
    if (handle == nullptr) return newPort(sw, port);
    record(portEntry(sw, port).part, placeOf(handle), key);
}

void Recorder::newPort(DVSSwitch *sw, const std::string &port) {
    portEntry(sw, port).there = false;
}

void Recorder::wholePort(DVSSwitch *sw, DVSPort *port) {
    PortBefore &kept = portEntry(sw, DVS_PortId(port));
    if (!kept.part.whole) kept.part = wholePart(placeOf(port));
}

void Recorder::wholeSwitch(DVSSwitch *sw) {
    if (entry(sw).whole) return;
    entry(sw).whole = true;
    entry(sw).global = wholePart({Scope::Global, sw});
    entry(sw).host = wholePart({Scope::Host, sw});
    entry(sw).mtu = mtuOf(entry(sw).alias);
    forEachPort(sw, [&](DVSPort *port) {
        wholePort(sw, port);
        return true;
    });
}

void Recorder::newSwitch(const std::string &id, const std::string &alias, const std::string &portset) {
    if (findSwitchById(id) != nullptr) return;
    if (!switches_.try_emplace(id, before_.switches.size()).second) return;
    const std::optional<KernelSwitches> kernel = askKernelSwitches();
    SwitchBefore entry;
    entry.id = id;
    entry.alias = alias;
    // A portset that is there already keeps the switch from being made, and belongs to somebody else. That of
    // a switch is safe with it.
    if (kernel && (!hasPortset(*kernel, portset) || ownerOfPortset(portset) != nullptr))
        entry.portset = portset;
    entry.there = false;
    before_.switches.push_back(std::move(entry));
}

void Recorder::mtu(DVSSwitch *sw) {
    SwitchBefore &kept = entry(sw);
    kept.setsMtu = true;
    if (!kept.mtu) kept.mtu = mtuOf(kept.alias);
}

}  // namespace qvs::config
