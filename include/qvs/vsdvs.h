/*
 * Switches, ports, uplinks and their stored properties.
 *
 * Every change goes to the kernel at once and is not seen by the snapshot (dvs.h) until the next
 * DVSLoadConfig. A switch is named by its alias, which must be known to the snapshot and of class "vswitch";
 * otherwise HYP_NOT_FOUND or HYP_BAD_PARAM. Null arguments that an operation needs give HYP_BAD_PARAM. What
 * the state library answers is returned unchanged.
 */
#ifndef QVS_VSDVS_H
#define QVS_VSDVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Releases a value that a VSDVS getter handed out (never with free); null is passed on to the state library.
 */
QVS_API void VSDVS_FreeMemory(void *pointer);

/* ------------------------------------------------------------------------------------------------------- *
 * Properties by key
 *
 * Each operation takes both an alias and a switch identifier and uses one of them: the alias when useAlias is
 * non-zero, the identifier (at most 63 characters, not looked up) otherwise. The other one is ignored and may
 * be null. The one used being null, or an identifier that is too long, gives HYP_BAD_PARAM.
 *
 *   VSDVS_PropBuffer buffer = {0, NULL};
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);   // asks for the length
 *   buffer.data = malloc((size_t)buffer.length);
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);
 * ------------------------------------------------------------------------------------------------------- */

/*
 * The buffer of the generic getters.
 *   length  in: capacity of data in bytes, or 0 to ask for the value's length; out: that length, and nothing
 * is written to it by any other call data    the caller's buffer; not read when length is 0
 */
typedef struct QVS_PACKED VSDVS_PropBuffer {
    int32_t length;
    void *data;
} VSDVS_PropBuffer;
QVS_ASSERT_SIZE(VSDVS_PropBuffer, 12);

/*
 * Reads a port, host or global property. A buffer larger than the value receives the value and zeros behind
 * it. HYP_NO_MEMORY: the buffer is too small (a negative capacity is); nothing is copied.
 */
QVS_API HYP_ReturnStatus VSDVS_GetPortProp(const char *alias, const char *portId, const char *key,
                                           VSDVS_PropBuffer *buffer, const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetHostProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetGlobProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);

/*
 * Stores a property of class CONFIG; VSDVS_SetRuntimeHostProp one of class RUNTIME. The value, length bytes,
 * is copied; a length of 0 stores an empty value and value may then be null.
 */
QVS_API HYP_ReturnStatus VSDVS_SetPortProp(const char *alias, const char *portId, const char *key,
                                           const void *value, uint32_t length, const char *switchId,
                                           uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_SetHostProp(const char *alias, const char *key, const void *value,
                                           uint32_t length, const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_SetRuntimeHostProp(const char *alias, const char *key, const void *value,
                                                  uint32_t length, const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_SetGlobProp(const char *alias, const char *key, const void *value,
                                           uint32_t length, const char *switchId, uint8_t useAlias);

/* Deletes a property. One that does not exist gives the state library's HYP_NOT_FOUND. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortProp(const char *alias, const char *portId, const char *key,
                                             const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_ClearHostProp(const char *alias, const char *key, const char *switchId,
                                             uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_ClearGlobProp(const char *alias, const char *key, const char *switchId,
                                             uint8_t useAlias);

/* ------------------------------------------------------------------------------------------------------- *
 * Switches and ports
 *
 *   VSDVS_CreateVSwitch("sw1", NULL, NULL, 105, 0, 0, 2, 4);   // 128 ports at most, uplink0-1, port0-3
 *   DVSLoadConfig();
 *   VSDVS_AddDVPort("sw1", "web", 1);
 *   VSDVS_DestroyVSwitch("sw1");
 * ------------------------------------------------------------------------------------------------------- */

/*
 * Creates a switch: its portset in the kernel, its record and properties, its uplinks "uplink0" onward and
 * its ports "port0" onward (connection id 1). A step that fails undoes the ones before it.
 *
 *   alias        readable name
 *   switchId     identifier, or null to have one made from the alias
 *   portsetName  name of the data path on this host, or null to use the alias
 *   version      switch version, 32 bits
 *   opaque       non-zero: ports are managed from outside
 *   maxPorts     port capacity; 0 means 128
 *   numUplinks, numPorts  how many to create
 *
 * HYP_BAD_PARAM: null alias, or a portset name that the kernel's shell or its node paths would interpret or
 * that is too long for a command line; nothing is run then. HYP_FAILURE: the shell command failed.
 * HYP_NO_MEMORY.
 */
QVS_API HYP_ReturnStatus VSDVS_CreateVSwitch(const char *alias, const char *switchId, const char *portsetName,
                                             uint32_t version, uint8_t opaque, uint32_t maxPorts,
                                             uint32_t numUplinks, uint32_t numPorts);

/* Removes a switch, its ports and its portset; the first step that fails ends it and gives the status
 * (HYP_FAILURE for the shell command). */
QVS_API HYP_ReturnStatus VSDVS_DestroyVSwitch(const char *alias);

/* Adds a port with a 32-bit connection id. */
QVS_API HYP_ReturnStatus VSDVS_AddDVPort(const char *alias, const char *portId, uint32_t connectId);

/* Adds a port with connection id 1 that carries the identifier of an interface managed from outside. If that
 * cannot be stored the port is removed again. */
QVS_API HYP_ReturnStatus VSDVS_AddOpaqueDVPort(const char *alias, const char *portId, const char *externalId);

QVS_API HYP_ReturnStatus VSDVS_RemoveDVPort(const char *alias, const char *portId);

/* ------------------------------------------------------------------------------------------------------- *
 * Uplinks
 *
 * Two lists with the same count describe them, both a 32-bit count followed by the entries, packed: the
 * global list holds the uplink names, the host list the ports that carry them here, in the same order.
 *
 *   void *names = NULL, *ports = NULL;
 *   if (VSDVS_GetSwitchUplinkPorts("sw1", &names, &ports) == HYP_OK) ...
 *   VSDVS_FreeMemory(names);
 *   VSDVS_FreeMemory(ports);
 * ------------------------------------------------------------------------------------------------------- */

/* An entry of the global list: at most 80 characters and zeros. */
typedef struct VSDVS_UplinkName {
    char name[81];
} VSDVS_UplinkName;
QVS_ASSERT_SIZE(VSDVS_UplinkName, 81);

/* An entry of the host list: at most 47 characters and zeros; a stored entry that is full has no NUL. */
typedef struct VSDVS_UplinkPort {
    char portId[48];
} VSDVS_UplinkPort;
QVS_ASSERT_SIZE(VSDVS_UplinkPort, 48);

/*
 * Hands out both lists, the names put in the order of the ports; the caller releases both with
 * VSDVS_FreeMemory. The switch is resolved by the kernel, not by the snapshot.
 *
 * HYP_FAILURE: a malformed list, unequal counts, or a port whose alias is no uplink name. HYP_NOT_FOUND: the
 * switch has no lists. When memory for sorting runs out both outputs are null and the status is HYP_OK. A
 * failed resolution leaves the outputs untouched, every other failure makes them null.
 */
QVS_API HYP_ReturnStatus VSDVS_GetSwitchUplinkPorts(const char *alias, void **globalList, void **hostList);

/*
 * Creates an uplink port for each entry of hostList, then stores both lists as given. A failure removes the
 * ports again and, when the host list could not be stored, clears the global one.
 */
QVS_API HYP_ReturnStatus VSDVS_SetSwitchUplinkPorts(const char *alias, const void *globalList,
                                                    const void *hostList);

/* The same with count uplinks named "uplink0" onward, for the switch with this identifier. */
QVS_API HYP_ReturnStatus SetNumSwitchUplinkPortsByUUID(const char *switchId, uint32_t count);

/*
 * Appends one uplink (80 characters are kept of its name, 47 of its port's) and creates its port.
 * HYP_EXISTS: a host entry with that name; nothing changes. A failure puts everything back.
 */
QVS_API HYP_ReturnStatus VSDVS_AddSwitchUplinkPort(const char *alias, const char *uplinkName);

/* Removes the uplink that portId carries, its port, and its entries; a list that becomes empty is cleared. An
 * uplink that is in neither list is a success that changes nothing. */
QVS_API HYP_ReturnStatus VSDVS_RemoveSwitchUplinkPort(const char *alias, const char *portId);

/* Clears both lists and leaves the uplink ports where they are. Returns the status of the resolution alone.
 */
QVS_API HYP_ReturnStatus VSDVS_ClearSwitchUplinkPorts(const char *alias);

QVS_EXTERN_C_END

#endif
