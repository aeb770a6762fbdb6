// SPDX-License-Identifier: Apache-2.0
// Reads, stores and clears one property in any scope.
#include "dvs/property.h"

#include <cstring>

namespace qvs {
namespace {

// Checks the pair of place and property before the state library is called.
HYP_ReturnStatus check(const Place &place, const Property &property) {
    if (place.status() != HYP_OK) return place.status();
    if (property.key == nullptr) return HYP_BAD_PARAM;
    return property.scope == Scope::Port && place.portId() == nullptr ? HYP_BAD_PARAM : HYP_OK;
}

}  // namespace

Place Place::ofExistingPort(const char *alias, const char *portId) {
    Place place = ofAlias(alias, portId);
    if (place.status_ != HYP_OK) return place;
    if (portId == nullptr) {
        place.status_ = HYP_BAD_PARAM;
    } else if (DVPortExist(place.id_.text, portId) == 0) {
        place.status_ = HYP_NOT_FOUND;
    }
    return place;
}

Place Place::ofSwitchId(const char *switchId, const char *portId) {
    Place place;
    place.given_ = switchId;
    place.portId_ = portId;
    if (switchId == nullptr) place.status_ = HYP_BAD_PARAM;
    return place;
}

HYP_ReturnStatus getProperty(const Place &place, const Property &property, MeshValue &value) {
    if (const HYP_ReturnStatus status = check(place, property); status != HYP_OK) return status;
    return value.fetch([&](void **data, uint32_t *length) {
        switch (property.scope) {
            case Scope::Global:
                return DVSHYP_GlobalPropGet(place.switchId(), property.key, data, length);
            case Scope::Host:
                return DVSHYP_HostPropGet(place.switchId(), property.key, data, length);
            case Scope::Port:
                return DVSHYP_PortDataGet(place.switchId(), place.portId(), property.key, data, length);
        }
        return HYP_BAD_PARAM;
    });
}

HYP_ReturnStatus setProperty(const Place &place, const Property &property, const void *value,
                             uint32_t length) {
    if (const HYP_ReturnStatus status = check(place, property); status != HYP_OK) return status;
    if (value == nullptr && length != 0) return HYP_BAD_PARAM;
    const auto &[key, scope, propType] = property;
    switch (scope) {
        case Scope::Global:
            return DVSHYP_GlobalPropSet(place.switchId(), key, value, length, propType);
        case Scope::Host:
            return DVSHYP_HostPropSet(place.switchId(), key, value, length, propType);
        case Scope::Port:
            return DVSHYP_PortDataSet(place.switchId(), place.portId(), key, value, length, propType);
    }
    return HYP_BAD_PARAM;
}

HYP_ReturnStatus clearProperty(const Place &place, const Property &property) {
    if (const HYP_ReturnStatus status = check(place, property); status != HYP_OK) return status;
    switch (property.scope) {
        case Scope::Global:
            return DVSHYP_GlobalPropClear(place.switchId(), property.key);
        case Scope::Host:
            return DVSHYP_HostPropClear(place.switchId(), property.key);
        case Scope::Port:
            return DVSHYP_PortDataClear(place.switchId(), place.portId(), property.key);
    }
    return HYP_BAD_PARAM;
}

HYP_ReturnStatus clearIfPresent(const Place &place, const Property &property) {
    if (place.status() != HYP_OK) return place.status();
    const HYP_ReturnStatus status = clearProperty(place, property);
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

HYP_ReturnStatus getSized(const Place &place, const Property &property, uint32_t size, MeshValue &value) {
    const HYP_ReturnStatus status = getProperty(place, property, value);
    if (status != HYP_OK || value.length() == size) return status;
    value.reset();
    return HYP_FAILURE;
}

HYP_ReturnStatus readRecord(const Place &place, const Property &property, void *record, uint32_t size) {
    MeshValue value;
    const HYP_ReturnStatus status = getSized(place, property, size, value);
    if (status != HYP_OK) return status;
    if (record == nullptr) return HYP_BAD_PARAM;
    std::memcpy(record, value.data(), size);
    return HYP_OK;
}

HYP_ReturnStatus readOrDefault(const Place &place, const Property &property, void *record, uint32_t size) {
    if (place.status() != HYP_OK) return place.status();
    const HYP_ReturnStatus status = readRecord(place, property, record, size);
    return status == HYP_NOT_FOUND ? HYP_OK : status;
}

HYP_ReturnStatus setText(const Place &place, const Property &property, const char *text) {
    if (place.status() != HYP_OK) return place.status();
    if (text == nullptr) return HYP_BAD_PARAM;
    return setProperty(place, property, text, static_cast<uint32_t>(std::strlen(text) + 1));
}

}  // namespace qvs
