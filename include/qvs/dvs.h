/*
 * The snapshot of the switch state, and the three names of a switch: the alias an administrator types, the
 * portset name of its data path on this host, and the identifier by which kernel and state library know it.
 *
 * Names are looked up in the snapshot alone: a switch or alias made after the last DVSLoadConfig is not seen
 * until the next one. DVSLoadConfig must not run while another thread looks something up.
 *
 *   SwitchIdString id;
 *   if (DVSAliasToSwitchId("sw1", id) == HYP_OK && DVPortExist(id, "port0")) ...
 */
#ifndef QVS_DVS_H
#define QVS_DVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/*
 * Discards the snapshot and loads the kernel's current switch state in its place. The first status that fails
 * is returned; all are the state library's, and the emulated host's answers 0xbad0040 (No connection) when
 * there is no host. A reload that fails after the reset leaves the snapshot empty, so that no alias is found.
 */
QVS_API HYP_ReturnStatus DVSLoadConfig(void);

/*
 * The identifier of the switch called alias, which must be of class "vswitch".
 *
 *   alias     NUL-terminated, borrowed
 *   switchId  a SwitchIdString of the caller: 64 bytes, byte 63 always NUL; untouched on failure
 *
 * HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM: its class is another one, or an argument is null.
 */
QVS_API HYP_ReturnStatus DVSAliasToSwitchId(const char *alias, char *switchId);

/* The same for a switch of any class. HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM: null argument.
 */
QVS_API HYP_ReturnStatus DVSAliasToSwitchIdAllTypes(const char *alias, char *switchId);

/*
 * The portset name of the switch called alias; a switch without one answers its stored alias, without that
 * its identifier.
 *
 *   portsetName  a SwitchAliasName of the caller: 128 bytes, no NUL when the name is that long
 *
 * HYP_NOT_FOUND: no switch has the alias; the output is then the empty string, with the other bytes as they
 * were. HYP_BAD_PARAM: null argument. The class of the switch is not checked.
 */
QVS_API HYP_ReturnStatus DVSAliasToPortsetName(const char *alias, char *portsetName);

/*
 * The alias of the switch that owns a portset. A stored portset name that is a prefix of portsetName matches.
 * A switch without an alias answers portsetName itself.
 *
 *   alias  a SwitchAliasName of the caller: 128 bytes, no NUL when the alias is that long
 *
 * A portset that no switch owns is a success with 128 zero bytes: test the first byte. HYP_BAD_PARAM: null or
 * empty portsetName (the output is then the empty string), or null output.
 */
QVS_API HYP_ReturnStatus DVSPortsetNameToAlias(const char *portsetName, char *alias);

/* DVSPortsetNameToAlias under the name of the VSDVS family; the statuses are its own. */
QVS_API HYP_ReturnStatus VSDVS_GetAliasFromPortset(const char *portsetName, char *alias);

/* Not a status: 1 when the snapshot holds the port, else 0 (also for null arguments). */
QVS_API uint8_t DVPortExist(const char *switchId, const char *portId);

/*
 * The kernel's number of a port, from the status record that the kernel keeps for it; read from the kernel
 * side, so always current.
 *
 *   alias, switchId  the switch, by either name
 *   portId           port identifier, NUL-terminated
 *   portNumber       receives the number, 32 bits; untouched on failure
 *
 * By alias, first: HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM: its class is not
 * "vswitch". Then, either way: HYP_FAILURE: the record is too short to hold a number. HYP_BAD_PARAM: null
 * argument. Else the status of the state library (HYP_NOT_FOUND without such a port). Neither the identifier
 * nor the port is looked up in the snapshot.
 */
QVS_API HYP_ReturnStatus VSDVS_DvPortIDToPortID(const char *alias, const char *portId, uint32_t *portNumber);
QVS_API HYP_ReturnStatus VSDVS_DvPortIDToPortIDFromDVSID(const char *switchId, const char *portId,
                                                         uint32_t *portNumber);

QVS_EXTERN_C_END

#endif
