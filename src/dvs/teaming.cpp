// SPDX-License-Identifier: Apache-2.0
// The teaming policies of a switch and of its ports, which distribute the traffic over the uplinks.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "dvs/property.h"
#include "qvs/vsdvs.h"

namespace qvs {
namespace {

constexpr Property kTeaming = propertyOf(QVS_KEY_TEAMING);
constexpr Property kPortTeaming = propertyOf(QVS_KEY_PORT_TEAMING);
constexpr Property kOverride = propertyOf(QVS_KEY_PORT_TEAMING_OVERRIDE);
constexpr Property kTable = propertyOf(QVS_KEY_LS_TEAMING);
constexpr Property kTableChoice = propertyOf(QVS_KEY_PORT_LS_TEAMING);
constexpr Property kTxUplink = propertyOf(QVS_KEY_PORT_TX_UPLINK);

constexpr uint32_t kLeastPortPolicySize = 8;
constexpr std::string_view kAlways = "always";

// Reads the name that is stored for a port under a key into a buffer of a fixed size. The buffer is cleared
// first and is the empty name on failure. The stored name may fill the buffer, with or without a NUL.
HYP_ReturnStatus readName(const char *alias, const char *port, const Property &property, char *name,
                          uint32_t size) {
    if (name == nullptr) return HYP_BAD_PARAM;
    std::memset(name, 0, size);
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(Place::ofAlias(alias, port), property, value);
    if (status != HYP_OK) return status;
    if (value.length() > size) return HYP_FAILURE;
    std::copy_n(value.data(), value.length(), name);
    return HYP_OK;
}

HYP_ReturnStatus getTable(const Place &place, void **table) {
    if (table != nullptr) *table = nullptr;
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(place, kTable, value);
    if (status != HYP_OK) return status;
    if (value.length() < sizeof(QVS_ListHead)) return HYP_FAILURE;
    if (table == nullptr) return HYP_BAD_PARAM;
    *table = value.release();
    return HYP_OK;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus VSDVS_GetTeamingPolicyFromDVSID(const char *switchId, void *policy) {
    return readRecord(Place::ofSwitchId(switchId), kTeaming, policy, sizeof(VSDVS_TeamingPolicy));
}

extern "C" HYP_ReturnStatus VSDVS_GetTeamingPolicy(const char *alias, void *policy) {
    return readRecord(Place::ofAlias(alias), kTeaming, policy, sizeof(VSDVS_TeamingPolicy));
}

extern "C" HYP_ReturnStatus VSDVS_SetTeamingPolicy(const char *alias, const void *policy) {
    return setProperty(Place::ofAlias(alias), kTeaming, policy, sizeof(VSDVS_TeamingPolicy));
}

extern "C" HYP_ReturnStatus VSDVS_ClearTeamingPolicy(const char *alias) {
    return clearIfPresent(Place::ofAlias(alias), kTeaming);
}

extern "C" HYP_ReturnStatus VSDVS_GetPortTeamingPolicy(const char *alias, const char *port, void *policy) {
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(Place::ofAlias(alias, port), kPortTeaming, value);
    if (status != HYP_OK) return status;
    if (value.length() < kLeastPortPolicySize) return HYP_FAILURE;
    if (policy == nullptr) return HYP_BAD_PARAM;
    // Copies the stored bytes, but at most the size of a policy.
    std::memcpy(policy, value.data(), std::min<size_t>(value.length(), sizeof(VSDVS_TeamingPolicy)));
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortTeamingPolicy(const char *alias, const char *port,
                                                       const void *policy) {
    return setProperty(Place::ofAlias(alias, port), kPortTeaming, policy, sizeof(VSDVS_TeamingPolicy));
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortTeamingPolicy(const char *alias, const char *port) {
    return clearIfPresent(Place::ofAlias(alias, port), kPortTeaming);
}

extern "C" HYP_ReturnStatus VSDVS_GetPortTeamingOverride(const char *alias, const char *port, char *name) {
    const HYP_ReturnStatus status = readName(alias, port, kOverride, name, VSDVS_TEAMING_OVERRIDE_SIZE);
    if (status == HYP_OK) name[VSDVS_TEAMING_OVERRIDE_SIZE - 1] = '\0';
    return status;
}

extern "C" HYP_ReturnStatus VSDVS_SetPortTeamingOverride(const char *alias, const char *port,
                                                         const char *name) {
    return setText(Place::ofAlias(alias, port), kOverride, name);
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortTeamingOverride(const char *alias, const char *port) {
    return clearIfPresent(Place::ofAlias(alias, port), kOverride);
}

extern "C" HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTableFromDVSID(const char *switchId, void **table) {
    return getTable(Place::ofSwitchId(switchId), table);
}

extern "C" HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTable(const char *alias, void **table) {
    return getTable(Place::ofAlias(alias), table);
}

extern "C" HYP_ReturnStatus VSDVS_SetLSTeamingPolicy(const char *alias, const void *table) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (table == nullptr) return HYP_BAD_PARAM;
    QVS_ListHead head;
    std::memcpy(&head, table, sizeof head);
    const uint64_t size = sizeof head + uint64_t{VSDVS_LS_TEAMING_ENTRY_SIZE} * head.count;
    if (size > UINT32_MAX) return HYP_BAD_PARAM;
    return setProperty(place, kTable, table, static_cast<uint32_t>(size));
}

extern "C" HYP_ReturnStatus VSDVS_ClearLSTeamingPolicy(const char *alias) {
    return clearIfPresent(Place::ofAlias(alias), kTable);
}

extern "C" HYP_ReturnStatus VSDVS_GetPortLSTeamingPolicyName(const char *alias, const char *port,
                                                             char *name) {
    return readName(alias, port, kTableChoice, name, VSDVS_LS_TEAMING_NAME_SIZE);
}

extern "C" HYP_ReturnStatus VSDVS_SetPortLSTeamingPolicy(const char *alias, const char *port,
                                                         const char *name) {
    return setText(Place::ofAlias(alias, port), kTableChoice, name);
}

extern "C" HYP_ReturnStatus VSDVS_ClearPortLSTeamingPolicy(const char *alias, const char *port) {
    return clearIfPresent(Place::ofAlias(alias, port), kTableChoice);
}

extern "C" HYP_ReturnStatus VSDVS_GetTxUplinkAlways(const char *alias, const char *port, uint8_t *always) {
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(Place::ofAlias(alias, port), kTxUplink, value);
    if (status != HYP_OK) return status;
    if (always == nullptr) return HYP_BAD_PARAM;
    *always = value.length() > kAlways.size() && value.text() == kAlways ? 1 : 0;
    return HYP_OK;
}

extern "C" HYP_ReturnStatus VSDVS_SetTxUplinkAlways(const char *alias, const char *port, uint8_t always) {
    return setText(Place::ofAlias(alias, port), kTxUplink, always != 0 ? kAlways.data() : "normal");
}
