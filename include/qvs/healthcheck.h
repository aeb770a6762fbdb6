/*
 * Health checks of a switch's teaming, VLANs and MTU: where they are deployed, with what parameter, and what
 * the kernel found on a port.
 *
 * A switch is named by its alias. For every function: HYP_NOT_FOUND: no switch in the snapshot has it.
 * HYP_BAD_PARAM: the switch is of another class than "vswitch", or a null argument. A status that is not
 * named comes from the state library. A get that fails leaves the caller's memory, pointers included, as it
 * was.
 *
 *   HealthCheck_Deployment check = {1, 5};   // on, every five minutes
 *   HealthCheck_DeployTeamCheck("sw1", (const uint8_t *)&check);
 */
#ifndef QVS_HEALTHCHECK_H
#define QVS_HEALTHCHECK_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* A deployment; key class CONFIG. */
typedef struct QVS_PACKED HealthCheck_Deployment {
    uint8_t enabled;
    uint32_t intervalMinutes;
} HealthCheck_Deployment;
QVS_ASSERT_SIZE(HealthCheck_Deployment, 5);

#define HEALTHCHECK_VLAN_MTU_PARAM_SIZE 512u

/* The head of a result. Ranges of two 16-bit numbers follow, first and last, first those of the first kind,
 * then those of the second; the record is 4 * (first + second + 1) bytes long. */
typedef struct QVS_PACKED HealthCheck_Result {
    uint16_t firstCount;  /* trunked VLAN ranges, or MTU ranges allowed */
    uint16_t secondCount; /* untrunked VLAN ranges, or MTU ranges disallowed */
} HealthCheck_Result;
QVS_ASSERT_SIZE(HealthCheck_Result, 4);

/* Releases a result that a HealthCheck getter handed out (never with free); null is passed on to the state
 * library. */
QVS_API void HealthCheck_FreeMemory(void *pointer);

/* The deployment of the check, a HealthCheck_Deployment of 5 bytes; zeros when never deployed. HYP_FAILURE,
 * for the getters: a stored record of another size. Deploying with enabled 0 clears it (HYP_NOT_FOUND also
 * when there is none); nothing else is checked. */
QVS_API HYP_ReturnStatus HealthCheck_GetTeamCheckDeploy(const char *alias, uint8_t *record);
QVS_API HYP_ReturnStatus HealthCheck_DeployTeamCheck(const char *alias, const uint8_t *record);
QVS_API HYP_ReturnStatus HealthCheck_GetVLANMTUCheckDeploy(const char *alias, uint8_t *record);
QVS_API HYP_ReturnStatus HealthCheck_DeployVLANMTUCheck(const char *alias, const uint8_t *record);

/* The parameter of the team check, one byte: non-zero when IP-hash teaming is expected. Zero when never set.
 * HYP_FAILURE, for the getter: a stored record of another size. Class POLICY. */
QVS_API HYP_ReturnStatus HealthCheck_GetTeamCheckParam(const char *alias, uint8_t *value);
QVS_API HYP_ReturnStatus HealthCheck_SetTeamCheckParam(const char *alias, uint8_t value);

/* The parameter block of the VLAN and MTU check, 512 opaque bytes; zeros when never set.
 * HYP_FAILURE, for the getter: a stored record of another size. Class POLICY. */
QVS_API HYP_ReturnStatus HealthCheck_GetVLANMTUCheckParam(const char *alias, uint8_t *block);
QVS_API HYP_ReturnStatus HealthCheck_SetVLANMTUCheckParam(const char *alias, const void *block);

/* Removes the deployment, then the parameter; what is not there is removed already. A deployment that cannot
 * be removed leaves the parameter. */
QVS_API HYP_ReturnStatus HealthCheck_ClearTeamCheck(const char *alias);
QVS_API HYP_ReturnStatus HealthCheck_ClearVLANMTUCheck(const char *alias);

/* Hands out what the kernel found on a port, a HealthCheck_Result and its ranges; the caller gives it back
 * with HealthCheck_FreeMemory. The port is not looked for in the snapshot. HYP_NOT_FOUND also: no result, or
 * no such port. HYP_FAILURE: its size is not what its counts say. */
QVS_API HYP_ReturnStatus HealthCheck_GetVLANCheckResult(const char *alias, const char *port, void **result);
QVS_API HYP_ReturnStatus HealthCheck_GetMTUCheckResult(const char *alias, const char *port, void **result);

QVS_EXTERN_C_END

#endif
