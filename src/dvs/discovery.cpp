// SPDX-License-Identifier: Apache-2.0
// The discovery protocol of a switch and its operation.
#include "qvs/discovery.h"

#include "dvs/property.h"

namespace qvs {
namespace {

constexpr Property kDiscovery = propertyOf(QVS_KEY_DISCOVERY);

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus Discovery_GetParam(const char *alias, uint8_t *record) {
    const Place place = Place::ofAlias(alias);
    const HYP_ReturnStatus status = readRecord(place, kDiscovery, record, sizeof(Discovery_Param));
    if (place.status() != HYP_OK || status != HYP_NOT_FOUND) return status;
    if (record == nullptr) return HYP_BAD_PARAM;
    // When nothing is stored, the operation is DISCOVERY_DOWN, and the protocol of the caller is unchanged.
    record[offsetof(Discovery_Param, operation)] = DISCOVERY_DOWN;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus Discovery_SetParam(const char *alias, const uint8_t *record) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (record == nullptr) return HYP_BAD_PARAM;
    if (record[offsetof(Discovery_Param, operation)] == DISCOVERY_DOWN)
        return clearProperty(place, kDiscovery);
    return setProperty(place, kDiscovery, record, sizeof(Discovery_Param));
}
