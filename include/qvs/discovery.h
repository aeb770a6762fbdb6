/*
 * The discovery protocol of a switch.
 *
 *   const uint8_t listen[2] = {DISCOVERY_LLDP, DISCOVERY_LISTEN};
 *   Discovery_SetParam("sw1", listen);
 */
#ifndef QVS_DISCOVERY_H
#define QVS_DISCOVERY_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define DISCOVERY_CDP 0u
#define DISCOVERY_LLDP 1u

#define DISCOVERY_DOWN 0u
#define DISCOVERY_LISTEN 1u
#define DISCOVERY_ADVERTISE 2u
#define DISCOVERY_ADVERTISE_AND_LISTEN 3u

/* The stored record, class CONFIG. */
typedef struct Discovery_Param {
    uint8_t protocol;
    uint8_t operation;
} Discovery_Param;
QVS_ASSERT_SIZE(Discovery_Param, 2);

/*
 * Reads the 2 bytes of a Discovery_Param. Never set: the operation becomes DISCOVERY_DOWN and the protocol
 * stays as it was. A failure leaves the caller's bytes as they were.
 *
 * HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM: the switch is of another class than
 * "vswitch", or null argument. HYP_FAILURE: a stored record of another size. Otherwise the status of the
 * state library.
 */
QVS_API HYP_ReturnStatus Discovery_GetParam(const char *alias, uint8_t *record);

/* Stores the 2 bytes, which are not checked; with operation DISCOVERY_DOWN clears the key instead.
 * HYP_NOT_FOUND: no such alias, or nothing to clear. HYP_BAD_PARAM: as above. Otherwise the status of the
 * state library. */
QVS_API HYP_ReturnStatus Discovery_SetParam(const char *alias, const uint8_t *record);

QVS_EXTERN_C_END

#endif
