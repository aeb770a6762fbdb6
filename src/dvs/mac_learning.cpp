// SPDX-License-Identifier: Apache-2.0
// MAC learning: the settings of the host for a switch, the settings of a port, and three flags of the host.
#include <cstring>

#include "dvs/keys.h"
#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kLearning = propertyOf(QVS_KEY_MAC_LEARNING);
constexpr Property kManagement = propertyOf(QVS_KEY_PORT_MAC_MANAGEMENT);
constexpr Property kLearnStatic = propertyOf(QVS_KEY_LEARN_STATIC);
constexpr Property kOverlayCache = propertyOf(QVS_KEY_OVERLAY_CACHE);
constexpr Property kStaticAllow = propertyOf(QVS_KEY_STATIC_MAC_ALLOW);

constexpr VSDVS_PortMACLearning kPortDefault = {0, 0, 4096, 0};

// Returns the three low bytes. The fourth byte of the record is not interpreted.
uint32_t agingTimeOf(const VSDVS_MACLearning &record) {
    uint32_t seconds = 0;
    std::memcpy(&seconds, record.agingTime, sizeof record.agingTime);
    return seconds;
}

// Clears a property that can be read. Returns HYP_OK if it is not stored. Does not clear a property that
// cannot be read.
HYP_ReturnStatus clearIfReadable(const char *alias, const Property &property) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, property, value);
    if (status == HYP_NOT_FOUND) return HYP_OK;
    value.reset();
    return status == HYP_OK ? clearProperty(place, property) : status;
}

// Reads a flag: 1 if the stored text begins with "true", 0 for any other text and if nothing is stored.
HYP_ReturnStatus getSwitch(const char *alias, const Property &property, uint8_t *enabled) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, property, value);
    if (status != HYP_OK && status != HYP_NOT_FOUND) return status;
    if (enabled == nullptr) return HYP_BAD_PARAM;
    *enabled = status == HYP_OK && value.text().starts_with("true") ? 1 : 0;
    return HYP_OK;
}

HYP_ReturnStatus setSwitch(const char *alias, const Property &property, uint8_t enable) {
    return setText(Place::ofAlias(alias), property, enable != 0 ? "true" : "false");
}

// Returns whether the port may change its MAC address: only if its security record is stored and does not
// deny it.
bool mayChangeMac(const Place &place) {
    uint32_t mask = 0;
    return readRecord(place, kPortSecurity, &mask, sizeof mask) == HYP_OK &&
           (mask & VSDVS_SECURITY_DENY_MAC_CHANGE) == 0;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetMACLearning(const char *alias, void *record) {
    const Place place = Place::ofAlias(alias);
    const HYP_ReturnStatus status = readRecord(place, kLearning, record, sizeof(VSDVS_MACLearning));
    if (place.status() != HYP_OK || status != HYP_NOT_FOUND) return status;
    if (record == nullptr) return HYP_BAD_PARAM;
    auto &learning = *static_cast<VSDVS_MACLearning *>(record);
    constexpr uint8_t kDefaultAging[3] = {600 & 0xff, 600 >> 8, 0};
    std::memcpy(learning.agingTime, kDefaultAging, sizeof kDefaultAging);
    learning.macLimit = 65536;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetMACLearning(const char *alias, const void *record) {
    if (record == nullptr) return HYP_BAD_PARAM;
    if (agingTimeOf(*static_cast<const VSDVS_MACLearning *>(record)) > QVS_MAC_AGING_MAX)
        return HYP_BAD_PARAM;
    return setProperty(Place::ofAlias(alias), kLearning, record, sizeof(VSDVS_MACLearning));
}

extern "C" HYP_ReturnStatus VSDVS_ClearMACLearning(const char *alias) {
    return clearIfReadable(alias, kLearning);
}

extern "C" HYP_ReturnStatus VSDVS_GetPortMACLearning(const char *alias, const char *port, void *value) {
    VSDVS_PortMACManagement stored = {0, kPortDefault};
    const HYP_ReturnStatus status =
        readOrDefault(Place::ofExistingPort(alias, port), kManagement, &stored, sizeof stored);
    if (status != HYP_OK) return status;
    if (value == nullptr) return HYP_BAD_PARAM;
    std::memcpy(value, &stored.learning, sizeof stored.learning);
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortMACLearning(const char *alias, const char *port, const void *value) {
    const Place place = Place::ofAlias(alias, port);
    if (place.status() != HYP_OK) return place.status();
    if (value == nullptr) return HYP_BAD_PARAM;
    VSDVS_PortMACManagement record = {};
    record.macChange = mayChangeMac(place) ? 1 : 0;
    std::memcpy(&record.learning, value, sizeof record.learning);
    return setProperty(place, kManagement, &record, sizeof record);
}

extern "C" HYP_ReturnStatus VSDVS_GetLearnStatic(const char *alias, uint8_t *enabled) {
    return getSwitch(alias, kLearnStatic, enabled);
}

extern "C" HYP_ReturnStatus VSDVS_SetLearnStatic(const char *alias, uint8_t enable) {
    return setSwitch(alias, kLearnStatic, enable);
}

extern "C" HYP_ReturnStatus VSDVS_ClearLearnStatic(const char *alias) {
    return clearProperty(Place::ofAlias(alias), kLearnStatic);
}

extern "C" HYP_ReturnStatus VSDVS_SetCaching(const char *alias, uint8_t enable) {
    return setSwitch(alias, kOverlayCache, enable);
}

extern "C" HYP_ReturnStatus VSDVS_ClearCaching(const char *alias) {
    return clearIfReadable(alias, kOverlayCache);
}

extern "C" HYP_ReturnStatus VSDVS_GetStaticMACAllow(const char *alias, uint8_t *enabled) {
    return getSwitch(alias, kStaticAllow, enabled);
}

extern "C" HYP_ReturnStatus VSDVS_SetStaticMACAllow(const char *alias, uint8_t enable) {
    return setSwitch(alias, kStaticAllow, enable);
}

extern "C" HYP_ReturnStatus VSDVS_ClearStaticMACAllow(const char *alias) {
    return clearProperty(Place::ofAlias(alias), kStaticAllow);
}
