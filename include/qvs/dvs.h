/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The snapshot of the switch state, and the three names of a switch: the alias that an administrator types,
 * the portset name of its data path on this host, and the identifier that the kernel and the state library
 * use.
 *
 * The functions look up names only in the snapshot. They do not find a switch or an alias that was created
 * after the last DVSLoadConfig. DVSLoadConfig must not run while another thread uses the snapshot.
 *
 *   SwitchIdString id;
 *   if (DVSAliasToSwitchId("sw1", id) == HYP_OK && DVPortExist(id, "port0")) ...
 */
#ifndef QVS_DVS_H
#define QVS_DVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/*
 * Discards the snapshot and loads the current switch state of the kernel instead.
 *
 * Returns the status of the first step that fails. All statuses come from the state library. The state
 * library of the emulated host returns 0xbad0040 (No connection) when there is no host. If the reload fails
 * after the reset, the snapshot is empty, and no alias is found.
 */
QVS_API HYP_ReturnStatus DVSLoadConfig(void);

/*
 * Looks up the identifier of a switch of class "vswitch" by its alias.
 *
 *   alias     NUL-terminated, borrowed
 *   switchId  receives the identifier; a SwitchIdString of the caller: 64 bytes, byte 63 is always NUL;
 *             unchanged on failure
 *
 * HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM: the switch has another class, or an argument is
 * null.
 */
QVS_API HYP_ReturnStatus DVSAliasToSwitchId(const char *alias, char *switchId);

/* Looks up the identifier of a switch of any class by its alias; the arguments are those of
 * DVSAliasToSwitchId. HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM: an argument is null. */
QVS_API HYP_ReturnStatus DVSAliasToSwitchIdAllTypes(const char *alias, char *switchId);

/*
 * Looks up the portset name of a switch of any class by its alias. If the switch has no portset name, the
 * result is its stored alias. If it has no stored alias either, the result is its identifier.
 *
 *   alias        NUL-terminated, borrowed
 *   portsetName  receives the name; a SwitchAliasName of the caller: 128 bytes, without a NUL when the name
 *                has 128 characters or more
 *
 * HYP_NOT_FOUND: no switch has the alias. The output is then the empty string; its other bytes are
 * unchanged. HYP_BAD_PARAM: an argument is null.
 */
QVS_API HYP_ReturnStatus DVSAliasToPortsetName(const char *alias, char *portsetName);

/*
 * Looks up the alias of the switch that owns a portset. A stored portset name matches when it is a prefix of
 * portsetName. If the switch has no alias, the result is portsetName itself.
 *
 *   portsetName  NUL-terminated, borrowed
 *   alias        receives the alias; a SwitchAliasName of the caller: 128 bytes, without a NUL when the alias
 *                has 128 characters or more
 *
 * When no switch owns the portset, the function returns HYP_OK and 128 zero bytes, so test the first byte.
 * HYP_BAD_PARAM: portsetName is null or empty (the output is then the empty string), or alias is null.
 */
QVS_API HYP_ReturnStatus DVSPortsetNameToAlias(const char *portsetName, char *alias);

/* Calls DVSPortsetNameToAlias; this is its name in the VSDVS family. The arguments and statuses are the
 * same. */
QVS_API HYP_ReturnStatus VSDVS_GetAliasFromPortset(const char *portsetName, char *alias);

/* Returns 1 when the snapshot contains the port, otherwise 0, also for null arguments. The result is not a
 * status. */
QVS_API uint8_t DVPortExist(const char *switchId, const char *portId);

/*
 * Reads the port number that the kernel assigned to a port. The number comes from the status record in the
 * kernel, so that it is always current. The first function takes the alias of the switch, the second one its
 * identifier.
 *
 *   alias, switchId  alias or identifier of the switch, NUL-terminated, borrowed
 *   portId           port identifier, NUL-terminated, borrowed
 *   portNumber       receives the number, 32 bits; unchanged on failure
 *
 * By alias only, and checked first: HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM:
 * the class of the switch is not "vswitch".
 *
 * Both functions: HYP_FAILURE: the record is too short to contain a number. HYP_BAD_PARAM: an argument is
 * null. Any other status comes from the state library (HYP_NOT_FOUND when there is no such port). Neither
 * function looks up the identifier or the port in the snapshot.
 */
QVS_API HYP_ReturnStatus VSDVS_DvPortIDToPortID(const char *alias, const char *portId, uint32_t *portNumber);
QVS_API HYP_ReturnStatus VSDVS_DvPortIDToPortIDFromDVSID(const char *switchId, const char *portId,
                                                         uint32_t *portNumber);

QVS_EXTERN_C_END

#endif
