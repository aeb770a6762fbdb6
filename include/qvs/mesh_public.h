/*
 * The hypervisor's distributed-switch state library, libmeshPublic.so: what the library and the tool expect
 * of it. Handles are opaque and belong to the snapshot; they stay valid until the snapshot is reset. Statuses
 * are the state library's; the library passes them on unchanged. The emulated host's answers HYP_NOT_FOUND
 * for a switch, port or key that is not there, HYP_EXISTS when one that is added is there already, and
 * 0xbad0040 (No connection) when there is no host.
 */
#ifndef QVS_MESH_PUBLIC_H
#define QVS_MESH_PUBLIC_H

#include <qvs/hyp.h>

/* Bits that classify a stored property. */
#define DVS_PROP_VOLATILE 4u
#define DVS_PROP_POLICY 8u
#define DVS_PROP_CONFIG 16u
#define DVS_PROP_RUNTIME 32u

/* The port states that DVS_PortState answers. */
#define DVS_PORT_INVALID 0u
#define DVS_PORT_LIVE 1u
#define DVS_PORT_SHADOW 2u
#define DVS_PORT_ZOMBIE 3u
#define DVS_PORT_LOCAL_CACHE 4u

/* The format DVSData_Serialize is asked for. */
#define DVS_DATA_FORMAT 5u

QVS_EXTERN_C_BEGIN

typedef struct DVSSwitch DVSSwitch;
typedef struct DVSPort DVSPort;
typedef struct DVSData DVSData;

/* The snapshot: discarded, built from a blob of DVSHYP_StateGet, searched. A walk ends when a callback
 * answers non-zero. What a lookup yields belongs to the snapshot and is not freed. */
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

/* Accessors. DVS_SwitchId yields at least 64 readable bytes. */
QVS_API const char *DVS_SwitchId(const DVSSwitch *sw);
QVS_API const char *DVS_ClassName(const DVSSwitch *sw);
QVS_API uint32_t DVS_GetMaxPorts(const DVSSwitch *sw);
QVS_API uint32_t DVS_Version(const DVSSwitch *sw);
QVS_API const char *DVS_PortId(const DVSPort *port);
/* Optional: a hypervisor's own state library may lack it. The library then takes every port for a live one; a
 * program that must run there, too, declares it weak and tests it before the call. */
QVS_API uint32_t DVS_PortState(const DVSPort *port);

/* One property. DVSData_Data returns the value's length in bytes and yields its address; nothing promises a
 * NUL behind it, but a value of length 0 still has one readable byte. */
QVS_API uint32_t DVSData_Data(const DVSData *data, const void **value);
QVS_API const char *DVSData_Name(const DVSData *data);
QVS_API uint32_t DVSData_PropType(const DVSData *data);

/* A container in which the initial properties of a new port are gathered and flattened. The serialised buffer
 * is released with free. */
QVS_API HYP_ReturnStatus DVSData_Alloc(DVSData **data, void *(*allocator)(size_t), void (*releaser)(void *));
QVS_API HYP_ReturnStatus DVSData_Update(DVSData *data, const char *key, const void *value, uint32_t length,
                                        uint32_t propType);
QVS_API HYP_ReturnStatus DVSData_Serialize(DVSData *data, void **buffer, uint32_t *length, uint32_t format);
QVS_API void DVSData_Free(DVSData *data);

/* The kernel side: always current, whatever the snapshot holds. The blob of DVSHYP_StateGet is released with
 * free, the values of the ...Get calls with DVSHYP_DataFree; ...Set copies the value. */
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
