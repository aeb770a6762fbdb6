/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Health checks of the teaming, the VLANs and the MTU of a switch: their deployment, their parameters, and
 * the results of the kernel for a port.
 *
 * Every function takes the alias of a switch, NUL-terminated and borrowed. Every function returns
 * HYP_NOT_FOUND when no switch in the snapshot has the alias, and HYP_BAD_PARAM when the class of the switch
 * is not "vswitch" or an argument is null. Any status that is not named comes from the state library. When a
 * getter fails, the memory of the caller is unchanged, including pointers.
 *
 *   HealthCheck_Deployment check = {1, 5};   // on, every five minutes
 *   HealthCheck_DeployTeamCheck("sw1", (const uint8_t *)&check);
 */
#ifndef QVS_HEALTHCHECK_H
#define QVS_HEALTHCHECK_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* The deployment of a check; the class of the property is CONFIG. */
typedef struct QVS_PACKED HealthCheck_Deployment {
    uint8_t enabled; /* non-zero: the check runs */
    uint32_t intervalMinutes;
} HealthCheck_Deployment;
QVS_ASSERT_SIZE(HealthCheck_Deployment, 5);

#define HEALTHCHECK_VLAN_MTU_PARAM_SIZE 512u

/* The header of a result. HealthCheck_Range entries follow: the ranges of the first kind, then those of the
 * second. The record has 4 * (firstCount + secondCount + 1) bytes. */
typedef struct QVS_PACKED HealthCheck_Result {
    uint16_t firstCount;  /* trunked VLAN ranges, or MTU ranges allowed */
    uint16_t secondCount; /* untrunked VLAN ranges, or MTU ranges disallowed */
} HealthCheck_Result;
QVS_ASSERT_SIZE(HealthCheck_Result, 4);

/* A range of VLAN ids, or of MTUs in bytes. */
typedef struct QVS_PACKED HealthCheck_Range {
    uint16_t first;
    uint16_t last; /* inclusive */
} HealthCheck_Range;
QVS_ASSERT_SIZE(HealthCheck_Range, 4);

/* Releases a result of a HealthCheck getter. Do not use free. Null is passed on to the state library. */
QVS_API void HealthCheck_FreeMemory(void *pointer);

/* Reads the deployment of the team check into record, a HealthCheck_Deployment of the caller, 5 bytes. The
 * record is zeros when the check was never deployed. HYP_FAILURE: the stored record has another size. */
QVS_API HYP_ReturnStatus HealthCheck_GetTeamCheckDeploy(const char *alias, uint8_t *record);

/* Deploys the team check with record, a HealthCheck_Deployment of 5 bytes, borrowed. With enabled 0, clears
 * the deployment instead, and returns HYP_NOT_FOUND when none is stored. The interval is not checked. */
QVS_API HYP_ReturnStatus HealthCheck_DeployTeamCheck(const char *alias, const uint8_t *record);

/* Reads the deployment of the VLAN and MTU check, like HealthCheck_GetTeamCheckDeploy. */
QVS_API HYP_ReturnStatus HealthCheck_GetVLANMTUCheckDeploy(const char *alias, uint8_t *record);

/* Deploys the VLAN and MTU check, or clears its deployment, like HealthCheck_DeployTeamCheck. */
QVS_API HYP_ReturnStatus HealthCheck_DeployVLANMTUCheck(const char *alias, const uint8_t *record);

/* Reads the parameter of the team check into value, one byte: non-zero when IP-hash teaming is expected, zero
 * when the parameter was never set. HYP_FAILURE: the stored record has another size. */
QVS_API HYP_ReturnStatus HealthCheck_GetTeamCheckParam(const char *alias, uint8_t *value);

/* Stores the parameter of the team check, one byte, with class POLICY. */
QVS_API HYP_ReturnStatus HealthCheck_SetTeamCheckParam(const char *alias, uint8_t value);

/* Reads the parameter block of the VLAN and MTU check into block, 512 opaque bytes of the caller. The block
 * is zeros when it was never set. HYP_FAILURE: the stored record has another size. */
QVS_API HYP_ReturnStatus HealthCheck_GetVLANMTUCheckParam(const char *alias, uint8_t *block);

/* Stores the parameter block of the VLAN and MTU check, 512 opaque bytes, borrowed, with class POLICY. */
QVS_API HYP_ReturnStatus HealthCheck_SetVLANMTUCheckParam(const char *alias, const void *block);

/* Clears the deployment, then the parameter of the team check. Returns HYP_OK when they are not stored. If
 * the deployment cannot be cleared, the parameter remains. */
QVS_API HYP_ReturnStatus HealthCheck_ClearTeamCheck(const char *alias);

/* Clears the deployment, then the parameter of the VLAN and MTU check, like HealthCheck_ClearTeamCheck. */
QVS_API HYP_ReturnStatus HealthCheck_ClearVLANMTUCheck(const char *alias);

/*
 * Return the result of the VLAN check, or of the MTU check, for a port.
 *
 *   port    port identifier, borrowed; it is not looked up in the snapshot
 *   result  receives a HealthCheck_Result and its ranges; the caller releases it with HealthCheck_FreeMemory
 *
 * HYP_NOT_FOUND also: there is no result or no such port. HYP_FAILURE: the size of the result does not match
 * its counts.
 */
QVS_API HYP_ReturnStatus HealthCheck_GetVLANCheckResult(const char *alias, const char *port, void **result);
QVS_API HYP_ReturnStatus HealthCheck_GetMTUCheckResult(const char *alias, const char *port, void **result);

QVS_EXTERN_C_END

#endif
