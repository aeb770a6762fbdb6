// SPDX-License-Identifier: Apache-2.0
// Health checks: their deployments, their parameters, and the results that the kernel stores on ports.
#include "qvs/healthcheck.h"

#include <cstring>

#include "dvs/property.h"

namespace qvs {
namespace {

constexpr Property kTeamDeploy = propertyOf(QVS_KEY_TEAM_CHECK_DEPLOYMENT);
constexpr Property kTeamParam = propertyOf(QVS_KEY_TEAM_CHECK_PARAMETER);
constexpr Property kVlanMtuDeploy = propertyOf(QVS_KEY_VLAN_MTU_CHECK_DEPLOYMENT);
constexpr Property kVlanMtuParam = propertyOf(QVS_KEY_VLAN_MTU_CHECK_PARAMETER);
// Only the kernel writes these properties.
constexpr Property kVlanResult = propertyOf(QVS_KEY_PORT_VLAN_CHECK_RESULT);
constexpr Property kMtuResult = propertyOf(QVS_KEY_PORT_MTU_CHECK_RESULT);

HYP_ReturnStatus getFixed(const char *alias, const Property &property, uint8_t *record, uint32_t size) {
    const Place place = Place::ofAlias(alias);
    const HYP_ReturnStatus status = readRecord(place, property, record, size);
    if (place.status() != HYP_OK || status != HYP_NOT_FOUND) return status;
    if (record == nullptr) return HYP_BAD_PARAM;
    std::memset(record, 0, size);
    return HYP_OK;
}

// Stores a deployment, or clears it if it is not enabled.
HYP_ReturnStatus deploy(const char *alias, const Property &property, const uint8_t *record) {
    const Place place = Place::ofAlias(alias);
    if (place.status() != HYP_OK) return place.status();
    if (record == nullptr) return HYP_BAD_PARAM;
    return record[offsetof(HealthCheck_Deployment, enabled)] != 0
               ? setProperty(place, property, record, sizeof(HealthCheck_Deployment))
               : clearProperty(place, property);
}

HYP_ReturnStatus clearCheck(const char *alias, const Property &deployment, const Property &parameter) {
    const Place place = Place::ofAlias(alias);
    const HYP_ReturnStatus status = clearIfPresent(place, deployment);
    return status == HYP_OK ? clearIfPresent(place, parameter) : status;
}

// A head and as many ranges as it says.
HYP_ReturnStatus getResult(const char *alias, const char *port, const Property &property, void **result) {
    MeshValue value;
    const HYP_ReturnStatus status = getProperty(Place::ofAlias(alias, port), property, value);
    if (status != HYP_OK) return status;
    if (value.length() < sizeof(HealthCheck_Result)) return HYP_FAILURE;
    const auto head = value.at<HealthCheck_Result>();
    const uint32_t ranges = uint32_t{head.firstCount} + head.secondCount;
    if (value.length() != sizeof head + sizeof(HealthCheck_Range) * ranges) return HYP_FAILURE;
    if (result == nullptr) return HYP_BAD_PARAM;
    *result = value.release();
    return HYP_OK;
}

}  // namespace
}  // namespace qvs

using namespace qvs;

extern "C" HYP_ReturnStatus HealthCheck_GetTeamCheckDeploy(const char *alias, uint8_t *record) {
    return getFixed(alias, kTeamDeploy, record, sizeof(HealthCheck_Deployment));
}

extern "C" HYP_ReturnStatus HealthCheck_DeployTeamCheck(const char *alias, const uint8_t *record) {
    return deploy(alias, kTeamDeploy, record);
}

extern "C" HYP_ReturnStatus HealthCheck_GetTeamCheckParam(const char *alias, uint8_t *value) {
    return getFixed(alias, kTeamParam, value, sizeof *value);
}

extern "C" HYP_ReturnStatus HealthCheck_SetTeamCheckParam(const char *alias, uint8_t value) {
    return setProperty(Place::ofAlias(alias), kTeamParam, &value, sizeof value);
}

extern "C" HYP_ReturnStatus HealthCheck_ClearTeamCheck(const char *alias) {
    return clearCheck(alias, kTeamDeploy, kTeamParam);
}

extern "C" HYP_ReturnStatus HealthCheck_GetVLANMTUCheckDeploy(const char *alias, uint8_t *record) {
    return getFixed(alias, kVlanMtuDeploy, record, sizeof(HealthCheck_Deployment));
}

extern "C" HYP_ReturnStatus HealthCheck_DeployVLANMTUCheck(const char *alias, const uint8_t *record) {
    return deploy(alias, kVlanMtuDeploy, record);
}

extern "C" HYP_ReturnStatus HealthCheck_GetVLANMTUCheckParam(const char *alias, uint8_t *block) {
    return getFixed(alias, kVlanMtuParam, block, HEALTHCHECK_VLAN_MTU_PARAM_SIZE);
}

extern "C" HYP_ReturnStatus HealthCheck_SetVLANMTUCheckParam(const char *alias, const void *block) {
    return setProperty(Place::ofAlias(alias), kVlanMtuParam, block, HEALTHCHECK_VLAN_MTU_PARAM_SIZE);
}

extern "C" HYP_ReturnStatus HealthCheck_ClearVLANMTUCheck(const char *alias) {
    return clearCheck(alias, kVlanMtuDeploy, kVlanMtuParam);
}

extern "C" HYP_ReturnStatus HealthCheck_GetVLANCheckResult(const char *alias, const char *port,
                                                           void **result) {
    return getResult(alias, port, kVlanResult, result);
}

extern "C" HYP_ReturnStatus HealthCheck_GetMTUCheckResult(const char *alias, const char *port,
                                                          void **result) {
    return getResult(alias, port, kMtuResult, result);
}
