/* SPDX-License-Identifier: Apache-2.0 */
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
    uint8_t protocol;  /* DISCOVERY_CDP or DISCOVERY_LLDP */
    uint8_t operation; /* DISCOVERY_DOWN and its kin */
} Discovery_Param;
QVS_ASSERT_SIZE(Discovery_Param, 2);

/*
 * Reads the discovery protocol of a switch.
 *
 *   alias   alias of the switch, borrowed
 *   record  receives the 2 bytes of a Discovery_Param; owned by the caller, unchanged on failure
 *
 * When nothing is stored, the function sets the operation to DISCOVERY_DOWN and leaves the protocol
 * unchanged.
 *
 * HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM: the class of the switch is not
 * "vswitch", or an argument is null. HYP_FAILURE: the stored record has another size. Any other status comes
 * from the state library.
 */
QVS_API HYP_ReturnStatus Discovery_GetParam(const char *alias, uint8_t *record);

/*
 * Stores the discovery protocol of a switch, or clears it when the operation is DISCOVERY_DOWN.
 *
 *   alias   alias of the switch, borrowed
 *   record  the 2 bytes of a Discovery_Param, borrowed; their values are not checked
 *
 * HYP_NOT_FOUND: no switch in the snapshot has the alias, or there is nothing to clear. HYP_BAD_PARAM: the
 * class of the switch is not "vswitch", or an argument is null. Any other status comes from the state
 * library.
 */
QVS_API HYP_ReturnStatus Discovery_SetParam(const char *alias, const uint8_t *record);

QVS_EXTERN_C_END

#endif
