// SPDX-License-Identifier: Apache-2.0
#include "config/apply/steps.h"

#include <qvs/keys.h>
#include <qvs/vsdvs.h>

#include <algorithm>

#include "config/apply/before.h"
#include "config/library/call.h"
#include "config/library/snapshot.h"
#include "config/library/uplink_list.h"
#include "config/settings/codec.h"

namespace qvs::config {
namespace {

Place placeIn(const Change &change, DVSSwitch *sw) {
    if (change.scope != Scope::Port) return {change.scope, sw, nullptr};
    return {Scope::Port, nullptr, sw == nullptr ? nullptr : lookUpPort(sw, change.port)};
}

Target targetOf(const Change &change) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(change.alias.c_str());
    return {change.alias, change.port, placeIn(change, sw)};
}

bool isThere(const Place &place) {
    return place.scope == Scope::Port ? place.port != nullptr : place.sw != nullptr;
}

HYP_ReturnStatus orAbsent(HYP_ReturnStatus status) {
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

Blob listOf(const std::vector<UplinkEntry> &uplinks, std::string UplinkEntry::*name, size_t entrySize) {
    std::vector<std::string> names;
    names.reserve(uplinks.size());
    for (const UplinkEntry &uplink : uplinks)
        names.push_back(uplink.*name);
    return packList(names, entrySize);
}

// Stores a value unless it is stored already.
HYP_ReturnStatus ensure(const Place &place, const Change &change, const char *key, const Blob *value) {
    const std::optional<Property> now = findProperty(place, key);
    if (value == nullptr ? !now : now && std::ranges::equal(now->value, *value)) return HYP_OK;
    return storeRaw(change, key, DVS_PROP_CONFIG, value);
}

}  // namespace

HYP_ReturnStatus createSwitch(const SwitchEntry &sw) {
    return call<VSDVS_CreateVSwitch>(sw.alias.c_str(), sw.id ? sw.id->c_str() : nullptr,
                                     sw.portset ? sw.portset->c_str() : nullptr,
                                     sw.version.value_or(QVS_SWITCH_VERSION_DEFAULT),
                                     uint8_t{sw.opaque.value_or(false)}, sw.maxPorts.value_or(0), 0u, 0u);
}

HYP_ReturnStatus addPort(const std::string &alias, const PortEntry &port) {
    constexpr uint32_t kFirstConnectId = 1;
    const uint32_t connectId = port.connectId.value_or(kFirstConnectId);
    if (!port.externalId) return call<VSDVS_AddDVPort>(alias.c_str(), port.id.c_str(), connectId);
    return call<VSDVS_AddOpaqueDVPort>(alias.c_str(), port.id.c_str(), port.externalId->c_str());
}

HYP_ReturnStatus storeSetting(const Change &change) {
    const Target target = targetOf(change);
    const StoredView now = isThere(target.place) ? storedOf(*change.setting, target.place) : StoredView{};
    return change.setting->store(target, change.setting->encode(change.after, now, target));
}

HYP_ReturnStatus clearSetting(const Change &change) {
    // The default that libqvs stores for some settings is a value, too, and a document would have it.
    const Target target = targetOf(change);
    if (change.setting->clear != nullptr) {
        const HYP_ReturnStatus status = orAbsent(change.setting->clear(target));
        if (status != HYP_OK) return status;
    }
    for (const char *key : change.setting->keys) {
        if (key == nullptr) continue;
        if (const HYP_ReturnStatus status = storeRaw(change, key, 0, nullptr); status != HYP_OK)
            return status;
    }
    return HYP_OK;
}

HYP_ReturnStatus storeRaw(const Change &change, const char *key, uint32_t classes, const Blob *value) {
    SwitchIdString id{};
    if (const HYP_ReturnStatus status = call<DVSAliasToSwitchId>(change.alias.c_str(), id); status != HYP_OK)
        return status;
    const char *port = change.port.c_str();
    const uint8_t *bytes = value == nullptr ? nullptr : value->data();
    const auto length = value == nullptr ? 0 : static_cast<uint32_t>(value->size());
    switch (change.scope) {
        case Scope::Global:
            return value == nullptr ? orAbsent(call<DVSHYP_GlobalPropClear>(id, key))
                                    : call<DVSHYP_GlobalPropSet>(id, key, bytes, length, classes);
        case Scope::Host:
            return value == nullptr ? orAbsent(call<DVSHYP_HostPropClear>(id, key))
                                    : call<DVSHYP_HostPropSet>(id, key, bytes, length, classes);
        case Scope::Port:
            break;
    }
    return value == nullptr ? orAbsent(call<DVSHYP_PortDataClear>(id, port, key))
                            : call<DVSHYP_PortDataSet>(id, port, key, bytes, length, classes);
}

HYP_ReturnStatus arrangeUplinks(const std::string &alias, const std::vector<UplinkEntry> &wanted) {
    DVSSwitch *sw = DVSState_SwitchFindByAlias(alias.c_str());
    if (sw == nullptr) return HYP_NOT_FOUND;
    Change change;
    change.alias = alias;
    change.scope = Scope::Port;
    for (const UplinkEntry &uplink : wanted) {
        DVSPort *port = lookUpPort(sw, uplink.port);
        if (port == nullptr) return HYP_NOT_FOUND;
        change.port = uplink.port;
        const Blob name = blobOfText(uplink.name);
        const HYP_ReturnStatus status = ensure(placeOf(port), change, QVS_KEY_PORT_ALIAS, &name);
        if (status != HYP_OK) return status;
    }
    const Blob names = listOf(wanted, &UplinkEntry::name, sizeof(VSDVS_UplinkName));
    const Blob ports = listOf(wanted, &UplinkEntry::port, sizeof(VSDVS_UplinkPort));
    change.port.clear();
    change.scope = Scope::Global;
    const HYP_ReturnStatus status =
        ensure({Scope::Global, sw}, change, QVS_KEY_UPLINK_NAMES, wanted.empty() ? nullptr : &names);
    if (status != HYP_OK) return status;
    change.scope = Scope::Host;
    return ensure({Scope::Host, sw}, change, QVS_KEY_UPLINK_PORTS, wanted.empty() ? nullptr : &ports);
}

std::vector<UplinkEntry> uplinksIn(const Value &value) {
    std::vector<UplinkEntry> uplinks;
    if (!value.isList()) return uplinks;
    for (const Value &item : value.list())
        uplinks.push_back({item["name"].text(), item["port"].text()});
    return uplinks;
}

}  // namespace qvs::config
