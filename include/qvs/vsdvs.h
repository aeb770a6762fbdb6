/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Switches, ports, uplinks and their stored properties.
 *
 * Every change goes to the kernel at once. The snapshot (dvs.h) does not contain it until the next
 * DVSLoadConfig.
 *
 * The following rules hold for every function, unless its comment says otherwise:
 *
 *   - Text arguments are NUL-terminated. The function borrows all arguments for the duration of the call.
 *   - The alias must be that of a switch of class "vswitch" in the snapshot. HYP_NOT_FOUND: no switch has the
 *     alias. HYP_BAD_PARAM: the switch has another class, or the alias is null.
 *   - If an argument that the function needs is null, the status is HYP_BAD_PARAM.
 *   - Any other status that is not named comes from the state library. The state library of the emulated host
 *     returns HYP_NOT_FOUND for a switch, port or key that does not exist, HYP_EXISTS for a switch or port
 *     that exists already, and 0xbad0040 (No connection) when there is no host. Without a host, the snapshot
 *     is empty, so that a function that takes an alias returns HYP_NOT_FOUND.
 *   - The function does not look up a port in the snapshot. It passes the port identifier to the state
 *     library unchanged. For a port that does not exist, a getter with a default therefore returns the
 *     default, and a clear function that ignores a missing key returns HYP_OK. Exceptions are
 *     VSDVS_GetPortMACLearning and the three functions for the multicast list of a port: they look up the
 *     port in the snapshot.
 *
 * Functions that run the shell of the kernel return HYP_BAD_PARAM, before they run or change anything, when
 * the shell or a node path would interpret the portset name.
 */
#ifndef QVS_VSDVS_H
#define QVS_VSDVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Releases a value of a VSDVS getter. Do not use free. Null is passed on to the state library. */
QVS_API void VSDVS_FreeMemory(void *pointer);

/* ------------------------------------------------------------------------------------------------------- *
 * Properties by key
 *
 * Each function takes an alias and a switch identifier and uses one of them. When useAlias is not 0, it uses
 * the alias. Otherwise it uses the identifier, which has at most 63 characters and is not looked up. The
 * function ignores the other name, which may be null. HYP_BAD_PARAM: the name that is used is null, the
 * identifier has 64 characters or more, or the key, or the port of a port property, is null.
 *
 *   VSDVS_PropBuffer buffer = {0, NULL};
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);   // asks for the length
 *   buffer.data = malloc((size_t)buffer.length);
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);
 * ------------------------------------------------------------------------------------------------------- */

/* The buffer of the generic getters. */
typedef struct QVS_PACKED VSDVS_PropBuffer {
    int32_t length; /* capacity of data in bytes; 0 requests the length of the value, which is stored here */
    void *data;     /* owned by the caller; not read when length is 0 */
} VSDVS_PropBuffer;
QVS_ASSERT_SIZE(VSDVS_PropBuffer, 12);

/*
 * Read a port, host or global property.
 *
 *   buffer  receives the value, followed by zeros up to the capacity; unchanged on failure, including its
 * data
 *
 * HYP_NOT_FOUND: the property is not stored. HYP_NO_MEMORY: the capacity is too small, for example negative;
 * nothing is copied. HYP_BAD_PARAM also, after the property has been found: buffer is null, or data is null
 * and the capacity is not 0.
 */
QVS_API HYP_ReturnStatus VSDVS_GetPortProp(const char *alias, const char *portId, const char *key,
                                           VSDVS_PropBuffer *buffer, const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetHostProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetGlobProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);

/*
 * Store a property, and replace its value if it is already stored. The class is CONFIG, except for
 * VSDVS_SetRuntimeHostProp, which stores a property of class RUNTIME.
 *
 *   value   length bytes, copied; may be null when length is 0
 *   length  length of the value in bytes, 32 bits; 0 stores an empty value
 *
 * HYP_BAD_PARAM also: value is null and length is not 0.
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

/* Clear a property. Return the HYP_NOT_FOUND of the state library when it is not stored. */
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
 * Creates a switch: its portset in the kernel, its record and properties, its uplinks "uplink0" onward, and
 * its ports "port0" onward (connection id 1). If a step fails, the function undoes the steps before it. It
 * does not read the snapshot, which does not contain the new switch until DVSLoadConfig.
 *
 *   alias        readable name; the function does not check whether another switch has it
 *   switchId     identifier, at most 63 characters; null derives one from the first 15 characters of the
 *                alias
 *   portsetName  name of the data path on this host, at most 127 characters; null uses the alias
 *   version      switch version, 32 bits
 *   opaque       not 0: the ports are managed from outside
 *   maxPorts     port capacity; 0 means 128
 *   numUplinks, numPorts  number of uplinks and ports to create
 *
 * HYP_BAD_PARAM, before anything is run: the alias is null, the identifier or the portset name is too long,
 * or the shell would interpret the portset name. HYP_FAILURE: the shell cannot create the portset, because
 * the kernel has a portset of that name (the case of a switch that exists with its portset), because the
 * kernel refuses the capacity (2^31 or more), or because there is no host. HYP_EXISTS, from the state
 * library: a switch has the identifier. HYP_NO_MEMORY: no memory for the uplink lists.
 */
QVS_API HYP_ReturnStatus VSDVS_CreateVSwitch(const char *alias, const char *switchId, const char *portsetName,
                                             uint32_t version, uint8_t opaque, uint32_t maxPorts,
                                             uint32_t numUplinks, uint32_t numPorts);

/*
 * Destroys a switch: dissociates it, removes it with its ports and properties, and destroys its portset with
 * the shell. The function stops at the first step that fails, and does not undo the steps before it.
 *
 * HYP_BAD_PARAM also, with nothing changed: the shell would interpret the stored portset name. HYP_FAILURE:
 * the shell cannot destroy the portset; the switch is already removed.
 */
QVS_API HYP_ReturnStatus VSDVS_DestroyVSwitch(const char *alias);

/* Adds a port with a 32-bit connection id. The alias of the port is its identifier. HYP_EXISTS, from the
 * state library: the switch has a port with this identifier, which remains unchanged. */
QVS_API HYP_ReturnStatus VSDVS_AddDVPort(const char *alias, const char *portId, uint32_t connectId);

/*
 * Adds a port with connection id 1 and the identifier of an interface that is managed from outside.
 *
 *   externalId  identifier of the interface
 *
 * If the identifier cannot be stored, the function removes the port again and returns the status of storing.
 * HYP_EXISTS, from the state library: the switch has a port with this identifier. HYP_BAD_PARAM also:
 * externalId is null; nothing is added.
 */
QVS_API HYP_ReturnStatus VSDVS_AddOpaqueDVPort(const char *alias, const char *portId, const char *externalId);

/* Removes a port and its properties. The uplink lists remain unchanged. HYP_NOT_FOUND also, from the state
 * library: there is no such port. */
QVS_API HYP_ReturnStatus VSDVS_RemoveDVPort(const char *alias, const char *portId);

/* ------------------------------------------------------------------------------------------------------- *
 * Uplinks
 *
 * Two lists with the same count describe the uplinks. Each list is a QVS_ListHead followed by packed entries.
 * The global list contains the uplink names. The host list contains the ports that carry the uplinks on this
 * host, in the same order. The alias of the port in a host entry is the name of its uplink. Reading and
 * storing are two requests. If two callers change the lists of a switch at the same time, one change
 * overwrites the other.
 *
 *   void *names = NULL, *ports = NULL;
 *   if (VSDVS_GetSwitchUplinkPorts("sw1", &names, &ports) == HYP_OK) ...
 *   VSDVS_FreeMemory(names);
 *   VSDVS_FreeMemory(ports);
 * ------------------------------------------------------------------------------------------------------- */

/* An entry of the global list: at most 80 characters, followed by zeros. */
typedef struct VSDVS_UplinkName {
    char name[81];
} VSDVS_UplinkName;
QVS_ASSERT_SIZE(VSDVS_UplinkName, 81);

/* An entry of the host list: at most 47 characters, followed by zeros. A stored entry of 48 characters has no
 * NUL. */
typedef struct VSDVS_UplinkPort {
    char portId[48];
} VSDVS_UplinkPort;
QVS_ASSERT_SIZE(VSDVS_UplinkPort, 48);

/*
 * Returns both lists, with the names in the order of the ports. The kernel resolves the alias, not the
 * snapshot. The function therefore finds a switch that was just created, and does not check its class.
 *
 *   globalList, hostList  receive the lists; the caller releases both with VSDVS_FreeMemory
 *
 * HYP_NOT_FOUND: the kernel does not know the alias, one of the two lists is not stored, or a port of the
 * host list does not exist. HYP_FAILURE: a list has a wrong size, the counts differ, or the alias of a port
 * is not an uplink name. HYP_BAD_PARAM: an argument is null. When the kernel does not answer, the status is
 * that of the errno of the device.
 *
 * When memory for sorting runs out, both outputs are null and the status is HYP_OK. When the alias cannot be
 * resolved, the outputs are unchanged. After every other failure they are null.
 */
QVS_API HYP_ReturnStatus VSDVS_GetSwitchUplinkPorts(const char *alias, void **globalList, void **hostList);

/*
 * Stores both lists, and creates an uplink port for each entry of hostList, whose identifier and alias are
 * the entry. The function creates the ports first. The lists replace those that are stored.
 *
 * On failure, the function removes the ports again. If the host list cannot be stored, it also clears the
 * global list. It does not restore lists that were stored before.
 *
 * The function does not check the contents of the lists. They must have the same count, and each host entry
 * must be one of the uplink names, in full. Otherwise all later functions that read, add or remove uplinks
 * return HYP_FAILURE.
 *
 * HYP_EXISTS, from the state library: a port of the host list exists. HYP_BAD_PARAM also: the size of a list
 * exceeds 32 bits.
 */
QVS_API HYP_ReturnStatus VSDVS_SetSwitchUplinkPorts(const char *alias, const void *globalList,
                                                    const void *hostList);

/* Creates count uplinks "uplink0" onward, like VSDVS_SetSwitchUplinkPorts, for the switch with this
 * identifier, which is not looked up in the snapshot. HYP_NO_MEMORY: no memory for the lists, or their size
 * exceeds 32 bits. HYP_BAD_PARAM: the identifier is null. */
QVS_API HYP_ReturnStatus SetNumSwitchUplinkPortsByUUID(const char *switchId, uint32_t count);

/*
 * Appends one uplink to the lists and creates its port, whose identifier and alias are the uplink name. Both
 * the snapshot and the kernel must know the alias.
 *
 *   uplinkName  at most 47 characters; the lists store 80 and 47 characters of it. If it is longer, the host
 *               entry is not the identifier of the port, and the lists cannot be read afterwards
 *
 * If only one of the two lists is stored, the function treats both as empty: it replaces the stored list with
 * one that contains only the new uplink.
 *
 * HYP_EXISTS: there is a host entry with that name or, from the state library, a port with that identifier;
 * nothing changes. HYP_FAILURE: VSDVS_GetSwitchUplinkPorts cannot read the stored lists. HYP_NO_MEMORY: no
 * memory for the lists. On failure, the function undoes all its changes.
 */
QVS_API HYP_ReturnStatus VSDVS_AddSwitchUplinkPort(const char *alias, const char *uplinkName);

/*
 * Removes the uplink that portId carries: first its port, then its entries. The function clears a list that
 * becomes empty. If the port exists but one of the lists does not contain it, the function returns HYP_OK and
 * changes nothing. If a list cannot be stored, the port remains removed, and nothing is undone.
 *
 * HYP_NOT_FOUND also: one of the lists is not stored, or there is no such port. HYP_FAILURE:
 * VSDVS_GetSwitchUplinkPorts cannot read the stored lists. HYP_NO_MEMORY: no memory for sorting; nothing
 * changes.
 */
QVS_API HYP_ReturnStatus VSDVS_RemoveSwitchUplinkPort(const char *alias, const char *portId);

/* Clears both lists and does not remove the uplink ports. Returns only the status of resolving the alias. It
 * does not report whether the lists were stored or could be cleared. */
QVS_API HYP_ReturnStatus VSDVS_ClearSwitchUplinkPorts(const char *alias);

/* ------------------------------------------------------------------------------------------------------- *
 * Rules of the typed functions below
 *
 *   - They store packed little-endian records with the layouts given here. The heading of each family names
 *     the class of its properties. <qvs/keys.h> lists their keys.
 *   - If a stored record has a wrong size, the status is HYP_FAILURE.
 *   - A getter that returns a pointer returns a value of the state library. The caller releases it with
 *     VSDVS_FreeMemory. The pointer is null on failure.
 *   - A getter that fills a record of the caller leaves it unchanged on failure, unless its comment says
 *     otherwise.
 *   - When nothing is stored, a getter returns the default that its comment names, or HYP_NOT_FOUND if the
 *     comment names no default.
 *   - When nothing is stored, a clear function returns HYP_OK, unless its comment says that it returns
 *     HYP_NOT_FOUND.
 *   - A setter checks only those values of a record that its comment names.
 * ------------------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------------- *
 * MTU: in the portset of the kernel, on each of its NICs, and as two global numbers of class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/*
 * Reads the MTU of the portset from the shell of the kernel, for a switch of any class.
 *
 *   mtu  receives the MTU in bytes; unchanged on failure
 *
 * HYP_FAILURE: the shell cannot be run or prints no number, for example without a host. HYP_BAD_PARAM also:
 * the shell would interpret the stored portset name (nothing is run), or mtu is null (after the shell has
 * run).
 */
QVS_API HYP_ReturnStatus VSDVS_GetMTU(const char *alias, int *mtu);

/*
 * Sets the MTU on the first 32 NICs, then on the portset, then in the properties.
 *
 *   mtu  1280 to 9000 bytes
 *
 * If a step fails, the function restores the old value in reverse order. It does not restore the NIC that
 * failed. It ignores a failure to store the second of the two properties. A list of NICs that the shell
 * cannot print is an empty one.
 *
 * HYP_BAD_PARAM, with nothing done: mtu is out of range (checked before the alias is resolved), or the shell
 * would interpret the stored portset name. HYP_FAILURE: the old MTU cannot be read, a shell command failed,
 * or the shell would interpret the name of a NIC.
 */
QVS_API HYP_ReturnStatus VSDVS_SetMTU(const char *alias, uint32_t mtu);

/* ------------------------------------------------------------------------------------------------------- *
 * Mirror sessions: one list for each port, and one for the uplinks of the host; class POLICY
 *
 * A list consists of a header, the sessions, and the entities of all sessions: 20 + 232 * sessions +
 * 52 * entities bytes. The entities of a session are contiguous: destinations, sources of ingress, sources of
 * egress. In all five functions, a null or empty port selects the list of the uplinks.
 * ------------------------------------------------------------------------------------------------------- */

#define VSDVS_MIRROR_MAGIC 0xfacebeefu
#define VSDVS_MIRROR_VERSION 2u          /* typed sessions; this library writes them */
#define VSDVS_MIRROR_VERSION_WILDCARD 1u /* the older form: masks in place of a type */

/* Session types. */
#define VSDVS_MIRROR_MIXDST 0u
#define VSDVS_MIRROR_DVPORT 1u
#define VSDVS_MIRROR_RMIRROR_SRC 2u
#define VSDVS_MIRROR_RMIRROR_DST 3u
#define VSDVS_MIRROR_ERMIRROR_SRC 4u
#define VSDVS_MIRROR_LOGICAL_SPAN 5u

/* Session flags. */
#define VSDVS_MIRROR_DST_NO_OUTPUT 0x1u
#define VSDVS_MIRROR_DST_NO_INPUT 0x2u
#define VSDVS_MIRROR_DST_ORIG_VLAN 0x4u
#define VSDVS_MIRROR_DST_ENCAP 0x8u
#define VSDVS_MIRROR_LEGACY 0x10u
#define VSDVS_MIRROR_DISABLED 0x20u

/* Masks of the wildcard form. */
#define VSDVS_MIRROR_WILD_VMM 0x1u
#define VSDVS_MIRROR_WILD_PNIC 0x2u
#define VSDVS_MIRROR_WILD_COS 0x4u
#define VSDVS_MIRROR_WILD_TCPIP 0x8u
#define VSDVS_MIRROR_WILD_TEST 0x10u

typedef struct QVS_PACKED VSDVS_MirrorHeader {
    uint32_t magic;   /* VSDVS_MIRROR_MAGIC */
    uint32_t version; /* VSDVS_MIRROR_VERSION or VSDVS_MIRROR_VERSION_WILDCARD */
    uint32_t sessionCount;
    uint32_t entityCount; /* of all sessions together */
    uint32_t reserved;    /* 0 */
} VSDVS_MirrorHeader;
QVS_ASSERT_SIZE(VSDVS_MirrorHeader, 20);

typedef struct QVS_PACKED VSDVS_MirrorSession {
    char sessionId[32];   /* followed by zeros; no NUL when it has 32 characters */
    char displayName[84]; /* NUL-terminated */
    uint32_t type;        /* VSDVS_MIRROR_MIXDST and the constants after it; not in the wildcard form */
    int32_t snapLength;   /* bytes to keep of each frame; -1 keeps the whole frame */
    uint32_t flags;       /* VSDVS_MIRROR_DST_NO_OUTPUT and the constants after it */
    uint16_t encapVlan;   /* with VSDVS_MIRROR_DST_ENCAP */
    uint16_t wildIn;      /* wildcard form only */
    uint16_t wildOut;     /* wildcard form only */
    uint8_t reserved1[2];
    uint32_t samplingRate;
    uint8_t reserved2[8];
    uint8_t mirrorStack; /* with VSDVS_MIRROR_ERMIRROR_SRC: non-zero is true */
    uint8_t reserved3[67];
    uint32_t dstEntities;    /* number of destinations */
    uint32_t srcInEntities;  /* number of sources of ingress */
    uint32_t srcOutEntities; /* number of sources of egress */
    uint32_t firstEntity;    /* index of the first entity of the session in the array of the list */
} VSDVS_MirrorSession;
QVS_ASSERT_SIZE(VSDVS_MirrorSession, 232);
QVS_ASSERT_OFFSET(VSDVS_MirrorSession, samplingRate, 136);
QVS_ASSERT_OFFSET(VSDVS_MirrorSession, dstEntities, 216);

#define VSDVS_MIRROR_TEXT_SIZE 32u

/* The address of a destination. */
typedef struct VSDVS_MirrorAddress {
    uint8_t isIPv6; /* non-zero: all 16 bytes are the address */
    uint8_t reserved[3];
    uint8_t address[16]; /* network order; an IPv4 address in the first 4 bytes */
} VSDVS_MirrorAddress;
QVS_ASSERT_SIZE(VSDVS_MirrorAddress, 20);

/*
 * A destination or a source of a session. The type of the session determines the contents of value.
 *
 * Destinations: a NUL-terminated port or uplink name (MIXDST, DVPORT, RMIRROR_DST), VSDVS_MIRROR_TEXT_SIZE
 * characters of text (RMIRROR_SRC), a VSDVS_MirrorAddress (ERMIRROR_SRC), or a VSDVS_MACAddress
 * (LOGICAL_SPAN). Sources: a 16-bit VLAN id (RMIRROR_DST), or a NUL-terminated port or uplink name (all other
 * types).
 */
typedef struct QVS_PACKED VSDVS_MirrorEntity {
    uint32_t word; /* not interpreted here */
    uint8_t value[48];
} VSDVS_MirrorEntity;
QVS_ASSERT_SIZE(VSDVS_MirrorEntity, 52);

/* Returns the stored list. The caller releases it with VSDVS_FreeMemory. HYP_NOT_FOUND: no list is stored.
 * HYP_FAILURE: the list is shorter than its counts require, or the alias cannot be resolved. HYP_BAD_PARAM:
 * an argument other than port is null. */
QVS_API HYP_ReturnStatus VSDVS_GetDVMirrorSessions(const char *alias, const char *port, void **list);

/* Stores the list in place of the stored one, also when it contains no session. HYP_BAD_PARAM, before the
 * alias is resolved: the list is null, a group of entities lies outside the array, the entity count is not
 * the sum of the groups, or the size of the list exceeds 32 bits. Magic, version and identifiers are not
 * checked.
 */
QVS_API HYP_ReturnStatus VSDVS_SetDVMirrorSessions(const char *alias, const char *port, const void *list);

/* Clears the stored list. */
QVS_API HYP_ReturnStatus VSDVS_ClearDVMirrorSessions(const char *alias, const char *port);

/* Appends the sessions of list to the stored ones. If no list is stored, there are no stored sessions. The
 * list of the caller is unchanged. On failure, nothing is stored. HYP_EXISTS: a session with one of the
 * identifiers is stored already (the identifiers in list are not compared with one another). HYP_BAD_PARAM:
 * as in VSDVS_SetDVMirrorSessions. HYP_FAILURE: the stored list is shorter than its counts require.
 * HYP_NO_MEMORY: no memory for the new list, or its size exceeds 32 bits. */
QVS_API HYP_ReturnStatus VSDVS_AppendDVMirrorSessions(const char *alias, const char *port, const void *list);

/* Removes the first session with this identifier (32 characters are compared) and its entities. If it is the
 * last session, the function clears the property and returns the status of clearing. HYP_NOT_FOUND also: no
 * list is stored, or it has no such session. HYP_FAILURE: the stored list is shorter than its counts require,
 * or it does not contain the entities of the session; nothing changes. */
QVS_API HYP_ReturnStatus VSDVS_RemoveDVMirrorSession(const char *alias, const char *port,
                                                     const char *sessionId);

/* ------------------------------------------------------------------------------------------------------- *
 * VLAN: map, policy and priority have class POLICY, nested tagging has class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* Port types of a private VLAN. */
#define VSDVS_PVLAN_PROMISCUOUS 1u
#define VSDVS_PVLAN_ISOLATED 2u
#define VSDVS_PVLAN_COMMUNITY 3u

typedef struct QVS_PACKED VSDVS_PrivateVLAN {
    uint16_t primary;   /* VLAN id */
    uint16_t secondary; /* VLAN id */
    uint8_t type;       /* VSDVS_PVLAN_... */
    uint8_t reserved[3];
} VSDVS_PrivateVLAN;
QVS_ASSERT_SIZE(VSDVS_PrivateVLAN, 8);

typedef struct QVS_PACKED VSDVS_VLANRange {
    uint16_t first;
    uint16_t last; /* inclusive; equal to first for one VLAN */
} VSDVS_VLANRange;
QVS_ASSERT_SIZE(VSDVS_VLANRange, 4);

#define VSDVS_VLAN_TRUNK 0x1u    /* guest VLAN tagging */
#define VSDVS_VLAN_PRIVATE 0x2u  /* the VLAN id is one of a private VLAN */
#define VSDVS_VLAN_PRIORITY 0x4u /* a priority is stored, too */

/* The policy of a port; rangeCount trunk ranges of type VSDVS_VLANRange follow. */
typedef struct QVS_PACKED VSDVS_PortVLAN {
    uint16_t flags; /* VSDVS_VLAN_... */
    uint16_t vlan;  /* 0 without a flag: no VLAN */
    uint16_t reserved;
    uint16_t rangeCount;
} VSDVS_PortVLAN;
QVS_ASSERT_SIZE(VSDVS_PortVLAN, 8);

#define VSDVS_NO_PRIORITY 0xffffffffu

/* Returns the private-VLAN map, count entries of VSDVS_PrivateVLAN. The caller releases it with
 * VSDVS_FreeMemory. HYP_NOT_FOUND also: no map is stored. HYP_FAILURE: the stored length is not a multiple of
 * 8. */
QVS_API HYP_ReturnStatus VSDVS_GetPrivateVLANMap(const char *alias, void **map, uint32_t *count);

/* Stores a private-VLAN map of count entries. A count of 0 clears the map and returns HYP_NOT_FOUND when none
 * is stored; map may then be null. HYP_BAD_PARAM also: the size of the map exceeds 32 bits. */
QVS_API HYP_ReturnStatus VSDVS_SetPrivateVLANMap(const char *alias, const void *map, uint32_t count);

/*
 * Returns the VLAN policy and the priority of a port.
 *
 *   policy    receives a VSDVS_PortVLAN and its ranges; the caller releases it with VSDVS_FreeMemory
 *   priority  receives the priority, 32 bits; 0 when none is stored or it cannot be read, whatever the flags
 *             of the policy are
 *
 * HYP_NOT_FOUND also: no policy is stored. HYP_FAILURE: the length of the policy does not match its range
 * count.
 */
QVS_API HYP_ReturnStatus VSDVS_GetPortVLANPolicy(const char *alias, const char *port, void **policy,
                                                 uint32_t *priority);

/*
 * Stores the VLAN policy of a port, and then stores or clears its priority.
 *
 *   vlan         VLAN id, not checked
 *   priority     priority of the tag, 32 bits, or VSDVS_NO_PRIORITY
 *   trunk        not 0: guest VLAN tagging; without ranges, all VLANs from 0 to 4094
 *   privateVlan  not 0: the id is one of a private VLAN
 *   ranges       rangeCount entries of VSDVS_VLANRange; stored with or without trunk
 *
 * HYP_BAD_PARAM also: ranges is null and rangeCount is not 0. HYP_NO_MEMORY: no memory for the record. If the
 * priority cannot be stored or cleared, the policy remains stored, and the function returns the status of the
 * priority.
 */
QVS_API HYP_ReturnStatus VSDVS_SetPortVLANPolicy(const char *alias, const char *port, uint16_t vlan,
                                                 uint32_t priority, uint8_t trunk, uint8_t privateVlan,
                                                 const void *ranges, uint16_t rangeCount);

/* Stores an empty VLAN policy and then clears the priority. HYP_NO_MEMORY: no memory for the record. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortVLANPolicy(const char *alias, const char *port);

/* Reads whether nested VLAN tagging is enabled: stores 1 or 0 in one byte, 0 when nothing is stored.
 * HYP_FAILURE: the size of the stored value is not 4 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortNestedVLANTagging(const char *alias, const char *port,
                                                        uint8_t *enabled);

/* Enables nested VLAN tagging when enabled is not 0, and disables it otherwise. */
QVS_API HYP_ReturnStatus VSDVS_SetPortNestedVLANTagging(const char *alias, const char *port, uint8_t enabled);

/* ------------------------------------------------------------------------------------------------------- *
 * Port security and the extra Ethernet filter, class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* A set bit denies. */
#define VSDVS_SECURITY_DENY_PROMISCUOUS 0x1u
#define VSDVS_SECURITY_DENY_MAC_CHANGE 0x2u
#define VSDVS_SECURITY_DENY_FORGED 0x4u

/* Frames that a filter accepts. */
#define VSDVS_FILTER_UNICAST 0x1u
#define VSDVS_FILTER_MULTICAST 0x2u
#define VSDVS_FILTER_ALLMULTI 0x4u
#define VSDVS_FILTER_BROADCAST 0x8u
#define VSDVS_FILTER_PROMISC 0x10u
#define VSDVS_FILTER_USE_LADRF 0x20u
#define VSDVS_FILTER_SINK 0x10000u /* the port is a sink port */

/* A MAC address in the order of the wire. */
typedef struct VSDVS_MACAddress {
    uint8_t bytes[6];
} VSDVS_MACAddress;
QVS_ASSERT_SIZE(VSDVS_MACAddress, 6);

typedef struct QVS_PACKED VSDVS_ExtraEthFilter {
    uint32_t flags;        /* VSDVS_FILTER_... */
    uint16_t addressCount; /* with VSDVS_FILTER_MULTICAST */
    uint8_t addresses[32][6];
    uint8_t reserved[2];
} VSDVS_ExtraEthFilter;
QVS_ASSERT_SIZE(VSDVS_ExtraEthFilter, 200);

/* Reads the security mask, 32 bits; VSDVS_SECURITY_DENY_PROMISCUOUS when nothing is stored. HYP_FAILURE: the
 * size of the stored value is not 4 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortSecurity(const char *alias, const char *port, uint32_t *mask);

/* Stores the security mask, 0 to 7. HYP_BAD_PARAM, before the alias is resolved: mask is null or above 7. */
QVS_API HYP_ReturnStatus VSDVS_SetPortSecurity(const char *alias, const char *port, const uint32_t *mask);

/* Reads the filter of a port into filter, a VSDVS_ExtraEthFilter of the caller. HYP_NOT_FOUND: no filter is
 * stored. HYP_FAILURE: the stored record has another size, or the alias cannot be resolved. HYP_BAD_PARAM: an
 * argument is null. */
QVS_API HYP_ReturnStatus VSDVS_GetExtraEthFilter(const char *alias, const char *port, void *filter);

/* Stores the filter of a port, the 200 bytes of a VSDVS_ExtraEthFilter. */
QVS_API HYP_ReturnStatus VSDVS_SetExtraEthFilter(const char *alias, const char *port, const void *filter);

/* Clears the filter of a port. */
QVS_API HYP_ReturnStatus VSDVS_ClearExtraEthFilter(const char *alias, const char *port);

/* Reads whether the port is a sink port: stores the sink bit of its filter, 1 or 0, in one byte; 0 without a
 * filter. HYP_FAILURE: as in VSDVS_GetExtraEthFilter, also when the alias cannot be resolved. */
QVS_API HYP_ReturnStatus VSDVS_IsSinkPortEnabled(const char *alias, const char *port, uint8_t *enabled);

/* Sets the sink bit of the filter when enable is not 0, and clears it otherwise. A port without a filter gets
 * a new one, which contains only zeros when enable is 0. A filter that has the requested bit is not stored
 * again. HYP_FAILURE: as in VSDVS_GetExtraEthFilter, also when the alias cannot be resolved. */
QVS_API HYP_ReturnStatus VSDVS_ConfigureSinkPort(const char *alias, const char *port, uint8_t enable);

/* ------------------------------------------------------------------------------------------------------- *
 * Teaming, class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* Load balancing. */
#define VSDVS_BALANCE_NONE 0u
#define VSDVS_BALANCE_SOURCE_IP 1u
#define VSDVS_BALANCE_SOURCE_MAC 2u
#define VSDVS_BALANCE_SOURCE_PORT 3u
#define VSDVS_BALANCE_EXPLICIT 4u
#define VSDVS_BALANCE_PORT_LOAD 5u

/* Conditions that make an uplink usable. */
#define VSDVS_SELECT_LINK_STATE 0x80u
#define VSDVS_SELECT_BEACON_STATE 0x20u

/* Behaviour when the uplink changes. */
#define VSDVS_BEHAVE_NOTIFY_SWITCH 0x20u
#define VSDVS_BEHAVE_ROLLING_FAILOVER 0x08u
#define VSDVS_BEHAVE_BEST_EFFORT 0x04u
#define VSDVS_BEHAVE_SHOTGUN 0x10u

#define VSDVS_TEAMING_MAX_UPLINKS 32u
#define VSDVS_TEAMING_OVERRIDE_SIZE 81u
#define VSDVS_LS_TEAMING_NAME_SIZE 136u
#define VSDVS_LS_TEAMING_ENTRY_SIZE 2748u

typedef struct QVS_PACKED VSDVS_TeamingPolicy {
    uint32_t loadBalancing; /* VSDVS_BALANCE_... */
    uint32_t linkSelection; /* VSDVS_SELECT_... */
    uint32_t word;          /* not interpreted here, stored unchanged */
    uint32_t linkBehaviour; /* VSDVS_BEHAVE_... */
    uint32_t activeCount;
    uint32_t standbyCount; /* active and standby together at most 32 */
    /* The active uplinks in order of preference, then the standby ones; each NUL-terminated. */
    char uplinks[VSDVS_TEAMING_MAX_UPLINKS][81];
} VSDVS_TeamingPolicy;
QVS_ASSERT_SIZE(VSDVS_TeamingPolicy, 2616);

/* Reads the teaming policy of a switch into policy, a VSDVS_TeamingPolicy of the caller. The switch is given
 * by its identifier, which is not looked up. HYP_NOT_FOUND also: no policy is stored. HYP_FAILURE: the stored
 * record has another size. */
QVS_API HYP_ReturnStatus VSDVS_GetTeamingPolicyFromDVSID(const char *switchId, void *policy);

/* Reads the teaming policy of a switch, like VSDVS_GetTeamingPolicyFromDVSID, by its alias. */
QVS_API HYP_ReturnStatus VSDVS_GetTeamingPolicy(const char *alias, void *policy);

/* Stores the teaming policy of a switch, the 2616 bytes of a VSDVS_TeamingPolicy, unchanged. */
QVS_API HYP_ReturnStatus VSDVS_SetTeamingPolicy(const char *alias, const void *policy);

/* Clears the teaming policy of a switch. */
QVS_API HYP_ReturnStatus VSDVS_ClearTeamingPolicy(const char *alias);

/* Reads the teaming policy of a port into policy, a VSDVS_TeamingPolicy of the caller. The stored record must
 * have at least 8 bytes. The function copies at most 2616 bytes of it and leaves the rest of the record of
 * the caller unchanged. HYP_NOT_FOUND also: no policy is stored. HYP_FAILURE: the stored record has less than
 * 8 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortTeamingPolicy(const char *alias, const char *port, void *policy);

/* Stores the teaming policy of a port, the 2616 bytes of a VSDVS_TeamingPolicy, unchanged. */
QVS_API HYP_ReturnStatus VSDVS_SetPortTeamingPolicy(const char *alias, const char *port, const void *policy);

/* Clears the teaming policy of a port. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortTeamingPolicy(const char *alias, const char *port);

/* Reads the name of the policy that overrides the teaming policy of the port.
 *
 *   name  81 bytes of the caller; cleared first (unless null), all zeros on failure, always NUL-terminated
 *
 * HYP_NOT_FOUND also: no name is stored. HYP_FAILURE: the stored name has more than 81 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortTeamingOverride(const char *alias, const char *port, char *name);

/* Stores the name of the overriding policy with its NUL; its length is not checked. */
QVS_API HYP_ReturnStatus VSDVS_SetPortTeamingOverride(const char *alias, const char *port, const char *name);

/* Clears the name of the overriding policy. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortTeamingOverride(const char *alias, const char *port);

/*
 * Return the table of logical-switch teaming policies of a switch, by its identifier, which is not looked up,
 * or by its alias.
 *
 *   table  receives a QVS_ListHead and that many entries of 2748 bytes; the caller releases it with
 *          VSDVS_FreeMemory; the length of the stored value is not compared with the count
 *
 * HYP_NOT_FOUND also: no table is stored. HYP_FAILURE: the stored value has less than 4 bytes.
 */
QVS_API HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTableFromDVSID(const char *switchId, void **table);
QVS_API HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTable(const char *alias, void **table);

/* Stores the table of logical-switch teaming policies. The count of the table determines its length.
 * HYP_BAD_PARAM also: the size of the table exceeds 32 bits. */
QVS_API HYP_ReturnStatus VSDVS_SetLSTeamingPolicy(const char *alias, const void *table);

/* Clears the table of logical-switch teaming policies. */
QVS_API HYP_ReturnStatus VSDVS_ClearLSTeamingPolicy(const char *alias);

/* Reads the name of the logical-switch teaming policy that the port selects.
 *
 *   name  136 bytes of the caller; cleared first (unless null), all zeros on failure; a stored name of 136
 *         bytes has no NUL
 *
 * HYP_NOT_FOUND also: no name is stored. HYP_FAILURE: the stored name has more than 136 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortLSTeamingPolicyName(const char *alias, const char *port, char *name);

/* Stores the name of the logical-switch teaming policy with its NUL; its length is not checked. */
QVS_API HYP_ReturnStatus VSDVS_SetPortLSTeamingPolicy(const char *alias, const char *port, const char *name);

/* Clears the name of the logical-switch teaming policy. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortLSTeamingPolicy(const char *alias, const char *port);

/* Reads whether the port always transmits through its uplink: stores 1 for the stored text "always" and 0 for
 * any other text, in one byte. HYP_NOT_FOUND also: nothing is stored; there is no default. */
QVS_API HYP_ReturnStatus VSDVS_GetTxUplinkAlways(const char *alias, const char *port, uint8_t *always);

/* Stores whether the port always transmits through its uplink: "always" when always is not 0, "normal"
 * otherwise. */
QVS_API HYP_ReturnStatus VSDVS_SetTxUplinkAlways(const char *alias, const char *port, uint8_t always);

/* ------------------------------------------------------------------------------------------------------- *
 * MAC learning, class CONFIG; host properties, and port properties for the settings of a port
 * ------------------------------------------------------------------------------------------------------- */

typedef struct QVS_PACKED VSDVS_MACLearning {
    uint8_t agingTime[3]; /* 24 bits, seconds, at most 1000000 */
    uint8_t reserved;     /* not interpreted here */
    uint32_t macLimit;
} VSDVS_MACLearning;
QVS_ASSERT_SIZE(VSDVS_MACLearning, 8);

typedef struct QVS_PACKED VSDVS_PortMACLearning {
    uint8_t learning; /* non-zero: enabled */
    uint8_t flooding; /* non-zero: enabled */
    uint32_t macLimit;
    uint32_t macLimitPolicy; /* 0: allow beyond the limit */
} VSDVS_PortMACLearning;
QVS_ASSERT_SIZE(VSDVS_PortMACLearning, 10);

/* The record that is stored for a port. The functions below read and store its last 10 bytes. */
typedef struct QVS_PACKED VSDVS_PortMACManagement {
    uint8_t macChange; /* non-zero: allowed; derived from the security of the port when it is stored */
    VSDVS_PortMACLearning learning;
} VSDVS_PortMACManagement;
QVS_ASSERT_SIZE(VSDVS_PortMACManagement, 11);

/* Reads the MAC-learning settings into record, a VSDVS_MACLearning of the caller. When nothing is stored: 600
 * seconds, 65536 addresses, and the reserved byte unchanged. HYP_FAILURE: the stored record has another size.
 */
QVS_API HYP_ReturnStatus VSDVS_GetMACLearning(const char *alias, void *record);

/* Stores the MAC-learning settings. HYP_BAD_PARAM, before the alias is resolved: record is null, or its
 * agingTime is above 1000000. */
QVS_API HYP_ReturnStatus VSDVS_SetMACLearning(const char *alias, const void *record);

/* Clears the MAC-learning settings. The function first reads the record; when that fails for another reason
 * than HYP_NOT_FOUND, it returns the status of reading. */
QVS_API HYP_ReturnStatus VSDVS_ClearMACLearning(const char *alias);

/* Reads the MAC-learning settings of a port into value, a VSDVS_PortMACLearning of the caller. When nothing
 * is stored: learning and flooding disabled, limit 4096, policy allow. HYP_NOT_FOUND also: the snapshot does
 * not contain the port. HYP_FAILURE: the size of the stored record is not 11 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortMACLearning(const char *alias, const char *port, void *value);

/* Stores the MAC-learning settings of a port as a VSDVS_PortMACManagement. macChange is 1 only if the
 * security mask of the port is stored, can be read, and does not deny a change of the MAC address. The port
 * is not looked up in the snapshot. */
QVS_API HYP_ReturnStatus VSDVS_SetPortMACLearning(const char *alias, const char *port, const void *value);

/* Reads whether static addresses are learnt: stores 1 or 0 in one byte, 0 when nothing is stored or the
 * stored text does not begin with "true". */
QVS_API HYP_ReturnStatus VSDVS_GetLearnStatic(const char *alias, uint8_t *enabled);

/* Enables the learning of static addresses when enable is not 0, and disables it otherwise. */
QVS_API HYP_ReturnStatus VSDVS_SetLearnStatic(const char *alias, uint8_t enable);

/* Clears the setting for the learning of static addresses. Returns HYP_NOT_FOUND when nothing is stored. */
QVS_API HYP_ReturnStatus VSDVS_ClearLearnStatic(const char *alias);

/* Enables caching for the overlay when enable is not 0, and disables it otherwise. */
QVS_API HYP_ReturnStatus VSDVS_SetCaching(const char *alias, uint8_t enable);

/* Clears the setting for overlay caching. The function first reads the property; when that fails for another
 * reason than HYP_NOT_FOUND, it returns the status of reading. */
QVS_API HYP_ReturnStatus VSDVS_ClearCaching(const char *alias);

/* Reads whether static addresses are accepted: stores 1 or 0 in one byte, 0 when nothing is stored or the
 * stored text does not begin with "true". */
QVS_API HYP_ReturnStatus VSDVS_GetStaticMACAllow(const char *alias, uint8_t *enabled);

/* Enables the acceptance of static addresses when enable is not 0, and disables it otherwise. */
QVS_API HYP_ReturnStatus VSDVS_SetStaticMACAllow(const char *alias, uint8_t enable);

/* Clears the setting for the acceptance of static addresses. Returns HYP_NOT_FOUND when nothing is stored. */
QVS_API HYP_ReturnStatus VSDVS_ClearStaticMACAllow(const char *alias);

/* ------------------------------------------------------------------------------------------------------- *
 * Multicast, class CONFIG
 *
 * An address list is a VSDVS_McastList and that many VSDVS_MACAddress entries. The functions for address
 * lists return HYP_BAD_PARAM when the alias cannot be resolved, and when the snapshot does not contain the
 * port.
 * ------------------------------------------------------------------------------------------------------- */

#define VSDVS_MCAST_LEGACY 0u
#define VSDVS_MCAST_SNOOPING 1u
#define VSDVS_MCAST_MAX_ADDRESSES 25u

#define VSDVS_RCF_CBPF 0u
#define VSDVS_RCF_EBPF 1u

typedef struct VSDVS_McastList {
    uint8_t count; /* addresses that follow, at most VSDVS_MCAST_MAX_ADDRESSES */
} VSDVS_McastList;
QVS_ASSERT_SIZE(VSDVS_McastList, 1);

/* Reads the multicast filter mode, VSDVS_MCAST_.... When nothing is stored, the function asks the kernel for
 * the mode of the running switch and returns its number unchanged. HYP_FAILURE: the stored mode is unknown.
 * When the kernel was asked, any other status is that of the errno of the device. */
QVS_API HYP_ReturnStatus VSDVS_GetMcastFilterMode(const char *alias, uint32_t *mode);

/* Stores the multicast filter mode, VSDVS_MCAST_.... HYP_BAD_PARAM, before the alias is resolved: the mode is
 * unknown. HYP_NOT_SUPPORTED: the switch has version 107 or later. HYP_NOT_FOUND also: the switch has no
 * stored version. HYP_FAILURE: the stored version has less than 4 bytes. */
QVS_API HYP_ReturnStatus VSDVS_SetMcastFilterMode(const char *alias, uint32_t mode);

/* Reads the instruction type of the receive filter, VSDVS_RCF_...; VSDVS_RCF_CBPF when it cannot be read or
 * is unknown. The function first sets the output to 0. It fails only if the alias cannot be resolved or type
 * is null. */
QVS_API HYP_ReturnStatus VSDVS_GetRCFType(const char *alias, uint32_t *type);

/* Stores the instruction type of the receive filter, VSDVS_RCF_.... HYP_BAD_PARAM, before the alias is
 * resolved: the type is unknown. */
QVS_API HYP_ReturnStatus VSDVS_SetRCFType(const char *alias, uint32_t type);

/* Returns the address list of a switch, a host property. The caller releases it with VSDVS_FreeMemory.
 * HYP_NOT_FOUND: no list is stored. HYP_FAILURE: the length of the list does not match its count byte, which
 * may be above 25. */
QVS_API HYP_ReturnStatus VSDVS_GetMcastUserLegacyEntries(const char *alias, void **list);

/*
 * Stores the address list of a switch.
 *
 *   count      number of addresses, at most 25; 0 stores an empty list
 *   addresses  count addresses of 6 bytes; may be null when count is 0
 *
 * HYP_LIMIT_EXCEEDED, before any other check: count is above 25. HYP_NO_MEMORY: no memory for the list.
 */
QVS_API HYP_ReturnStatus VSDVS_SetMcastUserLegacyEntries(const char *alias, uint32_t count,
                                                         const void *addresses);

/* Clears the address list of a switch. Returns HYP_NOT_FOUND when no list is stored. */
QVS_API HYP_ReturnStatus VSDVS_ClearMcastUserLegacyEntries(const char *alias);

/* Returns the address list of a port, which overrides that of the switch, like
 * VSDVS_GetMcastUserLegacyEntries. */
QVS_API HYP_ReturnStatus VSDVS_GetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                             void **list);

/* Stores the address list of a port, like VSDVS_SetMcastUserLegacyEntries. */
QVS_API HYP_ReturnStatus VSDVS_SetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                             uint32_t count, const void *addresses);

/* Clears the address list of a port. Returns HYP_NOT_FOUND when no list is stored. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortMcastUserLegacyEntries(const char *alias, const char *port);

QVS_EXTERN_C_END

#endif
