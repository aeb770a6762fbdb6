// Reading, storing and clearing one property in any scope.
#include "dvs/property.h"

namespace qvs {
namespace {

bool complete(const Place &place, const Property &property) {
    if (place.switchId == nullptr || property.key == nullptr) return false;
    return property.scope != Scope::Port || place.portId != nullptr;
}

}  // namespace

HYP_ReturnStatus getProperty(const Place &place, const Property &property, MeshValue &value) {
    if (!complete(place, property)) return HYP_BAD_PARAM;
    switch (property.scope) {
        case Scope::Global:
            return DVSHYP_GlobalPropGet(place.switchId, property.key, value.dataOut(), value.lengthOut());
        case Scope::Host:
            return DVSHYP_HostPropGet(place.switchId, property.key, value.dataOut(), value.lengthOut());
        case Scope::Port:
            return DVSHYP_PortDataGet(place.switchId, place.portId, property.key, value.dataOut(),
                                      value.lengthOut());
    }
    return HYP_BAD_PARAM;
}

HYP_ReturnStatus setProperty(const Place &place, const Property &property, const void *value,
                             uint32_t length) {
    if (!complete(place, property)) return HYP_BAD_PARAM;
    if (value == nullptr && length != 0) return HYP_BAD_PARAM;
    switch (property.scope) {
        case Scope::Global:
            return DVSHYP_GlobalPropSet(place.switchId, property.key, value, length, property.propType);
        case Scope::Host:
            return DVSHYP_HostPropSet(place.switchId, property.key, value, length, property.propType);
        case Scope::Port:
            return DVSHYP_PortDataSet(place.switchId, place.portId, property.key, value, length,
                                      property.propType);
    }
    return HYP_BAD_PARAM;
}

HYP_ReturnStatus clearProperty(const Place &place, const Property &property) {
    if (!complete(place, property)) return HYP_BAD_PARAM;
    switch (property.scope) {
        case Scope::Global:
            return DVSHYP_GlobalPropClear(place.switchId, property.key);
        case Scope::Host:
            return DVSHYP_HostPropClear(place.switchId, property.key);
        case Scope::Port:
            return DVSHYP_PortDataClear(place.switchId, place.portId, property.key);
    }
    return HYP_BAD_PARAM;
}

}  // namespace qvs
