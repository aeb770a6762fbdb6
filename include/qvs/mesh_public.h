/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The state library of the hypervisor, libmeshPublic.so: the functions that the library and the tool need.
 *
 * Handles are opaque. They belong to the snapshot and are valid until the snapshot is reset. The statuses are
 * those of the state library; the library passes them on unchanged. The state library of the emulated host
 * returns HYP_NOT_FOUND for a switch, port or key that does not exist, HYP_EXISTS when an object to be added
 * exists already, and 0xbad0040 (No connection) when there is no host.
 */
#ifndef QVS_MESH_PUBLIC_H
#define QVS_MESH_PUBLIC_H

#include <qvs/hyp.h>

/* Bits that classify a stored property. */
#define DVS_PROP_VOLATILE 4u
#define DVS_PROP_POLICY 8u
#define DVS_PROP_CONFIG 16u
#define DVS_PROP_RUNTIME 32u

/* The port states that DVS_PortState returns. */
#define DVS_PORT_INVALID 0u
#define DVS_PORT_LIVE 1u
#define DVS_PORT_SHADOW 2u
#define DVS_PORT_ZOMBIE 3u
#define DVS_PORT_LOCAL_CACHE 4u

/* The format to pass to DVSData_Serialize. */
#define DVS_DATA_FORMAT 5u

QVS_EXTERN_C_BEGIN

typedef struct DVSSwitch DVSSwitch;
typedef struct DVSPort DVSPort;
typedef struct DVSData DVSData;

/* Discard the snapshot (DVSState_ConfigReset), build it from a blob of DVSHYP_StateGet of length bytes
 * (DVSState_ConfigDeserialize), look up its objects, and walk them (...ForEach). A walk ends when a callback
 * returns a value other than zero. The result of a lookup belongs to the snapshot; do not release it. */
QVS_API HYP_ReturnStatus DVSState_ConfigReset(void);
QVS_API HYP_ReturnStatus DVSState_ConfigDeserialize(const void *buffer, uint32_t length);
QVS_API DVSSwitch *DVSState_SwitchFindByAlias(const char *alias);
QVS_API void DVSState_SwitchForEach(int (*callback)(DVSSwitch *, void *), void *context);
QVS_API DVSPort *DVSState_PortFind(const char *switchId, const char *portId);
QVS_API HYP_ReturnStatus DVSState_HostPropLookup(const char *switchId, const char *key, DVSData **data);
QVS_API HYP_ReturnStatus DVSState_GlobalPropLookup(const char *switchId, const char *key, DVSData **data);
QVS_API void DVSState_PortForEach(DVSSwitch *sw, int (*callback)(DVSPort *, void *), void *context);
QVS_API void DVSState_PortDataForEach(DVSPort *port, int (*callback)(DVSData *, void *), void *context);
QVS_API void DVSState_HostPropForEach(DVSSwitch *sw, int (*callback)(DVSData *, void *), void *context);
QVS_API void DVSState_GlobalPropForEach(DVSSwitch *sw, int (*callback)(DVSData *, void *), void *context);

/* Return an attribute of a switch or a port. At least 64 bytes are readable at the result of DVS_SwitchId. */
QVS_API const char *DVS_SwitchId(const DVSSwitch *sw);
QVS_API const char *DVS_ClassName(const DVSSwitch *sw);
QVS_API uint32_t DVS_GetMaxPorts(const DVSSwitch *sw);
QVS_API uint32_t DVS_Version(const DVSSwitch *sw);
QVS_API const char *DVS_PortId(const DVSPort *port);
/* Returns the state of a port, one of DVS_PORT_.... The function is optional: the state library of a
 * hypervisor may lack it. The library then treats every port as live. A program that must run there, too,
 * declares the function weak and tests its address before the call. */
QVS_API uint32_t DVS_PortState(const DVSPort *port);

/* Return the value, the key and the class bits of a property. DVSData_Data stores the address of the value
 * and returns its length in bytes. A NUL after the value is not guaranteed, but a value of length 0 has one
 * readable byte. */
QVS_API uint32_t DVSData_Data(const DVSData *data, const void **value);
QVS_API const char *DVSData_Name(const DVSData *data);
QVS_API uint32_t DVSData_PropType(const DVSData *data);

/* Create a container for the initial properties of a new port, add a property, serialise the container, and
 * release it. The caller releases the serialised buffer with free. */
QVS_API HYP_ReturnStatus DVSData_Alloc(DVSData **data, void *(*allocator)(size_t), void (*releaser)(void *));
QVS_API HYP_ReturnStatus DVSData_Update(DVSData *data, const char *key, const void *value, uint32_t length,
                                        uint32_t propType);
QVS_API HYP_ReturnStatus DVSData_Serialize(DVSData *data, void **buffer, uint32_t *length, uint32_t format);
QVS_API void DVSData_Free(DVSData *data);

/* Read and change the state of the kernel, independent of the snapshot. The caller releases the blob of
 * DVSHYP_StateGet with free, and the values of the other ...Get functions with DVSHYP_DataFree. The ...Set
 * functions copy the value. Lengths are in bytes, 32 bits. */
QVS_API HYP_ReturnStatus DVSHYP_StateGet(void **buffer, uint32_t *length);
QVS_API HYP_ReturnStatus DVSHYP_PortDataGet(const char *switchId, const char *portId, const char *key,
                                            void **value, uint32_t *length);
QVS_API HYP_ReturnStatus DVSHYP_HostPropGet(const char *switchId, const char *key, void **value,
                                            uint32_t *length);
QVS_API HYP_ReturnStatus DVSHYP_GlobalPropGet(const char *switchId, const char *key, void **value,
                                              uint32_t *length);
QVS_API HYP_ReturnStatus DVSHYP_PortDataSet(const char *switchId, const char *portId, const char *key,
                                            const void *value, uint32_t length, uint32_t propType);
QVS_API HYP_ReturnStatus DVSHYP_HostPropSet(const char *switchId, const char *key, const void *value,
                                            uint32_t length, uint32_t propType);
QVS_API HYP_ReturnStatus DVSHYP_GlobalPropSet(const char *switchId, const char *key, const void *value,
                                              uint32_t length, uint32_t propType);
QVS_API HYP_ReturnStatus DVSHYP_PortDataClear(const char *switchId, const char *portId, const char *key);
QVS_API HYP_ReturnStatus DVSHYP_HostPropClear(const char *switchId, const char *key);
QVS_API HYP_ReturnStatus DVSHYP_GlobalPropClear(const char *switchId, const char *key);
QVS_API HYP_ReturnStatus DVSHYP_SwitchAdd(const char *switchId, const char *className, uint32_t maxPorts,
                                          uint32_t version);
QVS_API HYP_ReturnStatus DVSHYP_SwitchAssociate(const char *switchId);
QVS_API HYP_ReturnStatus DVSHYP_SwitchDissociate(const char *switchId);
QVS_API HYP_ReturnStatus DVSHYP_SwitchRemove(const char *switchId);
QVS_API HYP_ReturnStatus DVSHYP_PortAdd(const char *switchId, const char *portId, const void *properties,
                                        uint32_t length);
QVS_API HYP_ReturnStatus DVSHYP_PortRemove(const char *switchId, const char *portId);
QVS_API void DVSHYP_DataFree(void *value);

QVS_EXTERN_C_END

#endif
