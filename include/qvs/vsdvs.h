/*
 * Switches, ports, uplinks and their stored properties.
 *
 * Every change goes to the kernel at once and is not seen by the snapshot (dvs.h) until the next
 * DVSLoadConfig.
 *
 * Four things hold for every function here, unless it says otherwise:
 *
 *   - The alias must be that of a switch in the snapshot, of class "vswitch". HYP_NOT_FOUND: no switch has
 *     it. HYP_BAD_PARAM: the switch is of another class, or the alias is null.
 *   - A null argument that the function needs gives HYP_BAD_PARAM.
 *   - Every other status that is not named comes from the state library. The emulated host's answers
 *     HYP_NOT_FOUND for a switch, port or key that it does not have, HYP_EXISTS for a switch or port that
 *     it has already, and 0xbad0040 (No connection) when there is no host. But without a host the snapshot
 *     is empty, so that a function that is given an alias answers HYP_NOT_FOUND.
 *   - A port is not looked for in the snapshot: its identifier goes to the state library as it is. So a
 *     getter that has a default answers it for a port that does not exist, too, and a clear function that
 *     forgives a missing key succeeds. Those that do look for it say "no such port in the snapshot":
 *     VSDVS_GetPortMACLearning and the three functions on a port's multicast list.
 *
 * Functions that run the kernel's shell refuse a portset name that the shell or a node path would interpret
 * with HYP_BAD_PARAM, before anything is run or changed.
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
 * be null. HYP_BAD_PARAM: the one used is null, the identifier has 64 characters or more, or the key or the
 * port of a port property is null.
 *
 *   VSDVS_PropBuffer buffer = {0, NULL};
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);   // asks for the length
 *   buffer.data = malloc((size_t)buffer.length);
 *   VSDVS_GetGlobProp("sw1", "com.quillon.common.version", &buffer, NULL, 1);
 * ------------------------------------------------------------------------------------------------------- */

/* The buffer of the generic getters. */
typedef struct QVS_PACKED VSDVS_PropBuffer {
    int32_t length; /* capacity of data in bytes; 0 asks for the value's length, which is written here */
    void *data;     /* the caller's; not looked at when length is 0 */
} VSDVS_PropBuffer;
QVS_ASSERT_SIZE(VSDVS_PropBuffer, 12);

/*
 * Reads a port, host or global property. A buffer larger than the value receives the value and zeros behind
 * it. A failure leaves buffer and data as they were.
 *
 * HYP_NOT_FOUND: no such property. HYP_NO_MEMORY: the buffer is too small (a negative capacity is); nothing
 * is copied. HYP_BAD_PARAM also, once the property has been found: null buffer, or null data with a capacity.
 */
QVS_API HYP_ReturnStatus VSDVS_GetPortProp(const char *alias, const char *portId, const char *key,
                                           VSDVS_PropBuffer *buffer, const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetHostProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);
QVS_API HYP_ReturnStatus VSDVS_GetGlobProp(const char *alias, const char *key, VSDVS_PropBuffer *buffer,
                                           const char *switchId, uint8_t useAlias);

/*
 * Stores a property of class CONFIG; VSDVS_SetRuntimeHostProp one of class RUNTIME. The value, length bytes,
 * is copied; a length of 0 stores an empty value and value may then be null. A value that is there is
 * replaced. HYP_BAD_PARAM also: null value of some length.
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
 * its ports "port0" onward (connection id 1). A step that fails undoes the ones before it. The snapshot is
 * not asked and does not see the new switch before DVSLoadConfig.
 *
 *   alias        readable name; whether another switch has it is not checked
 *   switchId     identifier, at most 63 characters, or null to have one made from the first 15 characters of
 *                the alias
 *   portsetName  name of the data path on this host, at most 127 characters, or null to use the alias
 *   version      switch version, 32 bits
 *   opaque       non-zero: ports are managed from outside
 *   maxPorts     port capacity; 0 means 128
 *   numUplinks, numPorts  how many to create
 *
 * HYP_BAD_PARAM, before anything is run: null alias, an identifier or a portset name that is too long, or a
 * portset name that is refused. HYP_FAILURE: the shell could not create the portset, because the kernel has
 * one of that name (so for a switch that exists with its portset), because it refuses the capacity (2^31 or
 * more), or because there is no host. HYP_EXISTS, from the state library: a switch has the identifier.
 * HYP_NO_MEMORY: no memory for the uplink lists.
 */
QVS_API HYP_ReturnStatus VSDVS_CreateVSwitch(const char *alias, const char *switchId, const char *portsetName,
                                             uint32_t version, uint8_t opaque, uint32_t maxPorts,
                                             uint32_t numUplinks, uint32_t numPorts);

/*
 * Removes a switch: dissociates it, removes it with its ports and properties, and has the shell destroy its
 * portset. The first step that fails ends it; the steps before it are not undone.
 *
 * HYP_BAD_PARAM also, with nothing changed: the stored portset name is refused. HYP_FAILURE: the shell could
 * not destroy the portset; the switch is gone by then.
 */
QVS_API HYP_ReturnStatus VSDVS_DestroyVSwitch(const char *alias);

/* Adds a port with a 32-bit connection id; its alias is its identifier. HYP_EXISTS, from the state library:
 * the switch has such a port; it stays as it is. */
QVS_API HYP_ReturnStatus VSDVS_AddDVPort(const char *alias, const char *portId, uint32_t connectId);

/* Adds a port with connection id 1 that carries the identifier of an interface managed from outside. If that
 * cannot be stored the port is removed again and the status is that of storing. HYP_EXISTS, from the state
 * library: the switch has such a port. HYP_BAD_PARAM also: null externalId; nothing is added. */
QVS_API HYP_ReturnStatus VSDVS_AddOpaqueDVPort(const char *alias, const char *portId, const char *externalId);

/* Removes a port and its properties, and leaves the uplink lists as they are. HYP_NOT_FOUND also, from the
 * state library: no such port. */
QVS_API HYP_ReturnStatus VSDVS_RemoveDVPort(const char *alias, const char *portId);

/* ------------------------------------------------------------------------------------------------------- *
 * Uplinks
 *
 * Two lists with the same count describe them, both a 32-bit count followed by the entries, packed: the
 * global list holds the uplink names, the host list the ports that carry them here, in the same order. The
 * alias of the port in a host entry is its uplink's name. Reading and storing are two requests: two callers
 * who change the lists of a switch at once overwrite each other.
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
 * VSDVS_FreeMemory. The kernel resolves the alias, not the snapshot: a switch just created is found, and its
 * class is not checked.
 *
 * HYP_NOT_FOUND: the kernel knows no such alias, one of the two lists is missing, or a port of the host list
 * is. HYP_FAILURE: a list of the wrong size, unequal counts, or a port whose alias is no uplink name.
 * HYP_BAD_PARAM: null argument. The status of the device's errno when the kernel does not answer.
 *
 * When memory for sorting runs out both outputs are null and the status is HYP_OK. A failed resolution leaves
 * the outputs untouched, every other failure makes them null.
 */
QVS_API HYP_ReturnStatus VSDVS_GetSwitchUplinkPorts(const char *alias, void **globalList, void **hostList);

/*
 * Creates an uplink port for each entry of hostList, whose identifier and alias are the entry, then stores
 * both lists as given, in place of those that are stored. A failure removes the ports again and, when the
 * host list could not be stored, clears the global one; lists that were stored before are not put back.
 *
 * What the lists hold is not checked. They must have the same count, and each host entry must be one of the
 * uplink names, in full; otherwise every later reading, adding and removing of uplinks answers HYP_FAILURE.
 *
 * HYP_EXISTS, from the state library: a port of the host list exists. HYP_BAD_PARAM also: a count whose list
 * would be longer than 32 bits can say.
 */
QVS_API HYP_ReturnStatus VSDVS_SetSwitchUplinkPorts(const char *alias, const void *globalList,
                                                    const void *hostList);

/* The same with count uplinks named "uplink0" onward, for the switch with this identifier, which is not
 * looked up in the snapshot. HYP_NO_MEMORY: no memory for the lists, or longer than 32 bits can say.
 * HYP_BAD_PARAM: null identifier. */
QVS_API HYP_ReturnStatus SetNumSwitchUplinkPortsByUUID(const char *switchId, uint32_t count);

/*
 * Appends one uplink and creates its port, whose identifier and alias are the name. The lists keep 80 and 47
 * characters of it. Keep names to 47 characters: the entry of a longer one is no port's identifier, and the
 * lists cannot be read afterwards. If one of the two lists is missing both count as empty: the one that is
 * there is replaced, with the new uplink alone in it. The alias must be known to the snapshot and to the
 * kernel.
 *
 * HYP_EXISTS: a host entry with that name or, from the state library, a port with that identifier; nothing
 * changes. HYP_FAILURE: stored lists that VSDVS_GetSwitchUplinkPorts cannot read. HYP_NO_MEMORY: no memory
 * for the lists. A failure puts everything back.
 */
QVS_API HYP_ReturnStatus VSDVS_AddSwitchUplinkPort(const char *alias, const char *uplinkName);

/*
 * Removes the uplink that portId carries: first its port, then its entries; a list that becomes empty is
 * cleared. A port that exists but is missing from either list is a success that changes nothing. A list that
 * cannot be stored leaves the port removed; nothing is put back.
 *
 * HYP_NOT_FOUND also: the switch lacks a list, or there is no such port. HYP_FAILURE: stored lists that
 * VSDVS_GetSwitchUplinkPorts cannot read. HYP_NO_MEMORY: no memory for sorting; nothing changes.
 */
QVS_API HYP_ReturnStatus VSDVS_RemoveSwitchUplinkPort(const char *alias, const char *portId);

/* Clears both lists and leaves the uplink ports where they are. Returns the status of the alias alone:
 * whether there were lists, and whether they could be cleared, is not told. */
QVS_API HYP_ReturnStatus VSDVS_ClearSwitchUplinkPorts(const char *alias);

/* ------------------------------------------------------------------------------------------------------- *
 * What the typed operations below have in common
 *
 * They store packed little-endian records whose layouts are given here; the first line of each family names
 * the keys and their class. A stored record of the wrong size gives HYP_FAILURE. A getter that hands out a
 * pointer hands out the state library's own value, to be given back with VSDVS_FreeMemory; the pointer is
 * null after a failure. A getter that fills a record of the caller touches it only on success, unless it says
 * otherwise. A getter whose key was never set answers the default it names, or HYP_NOT_FOUND where it names
 * none. Clearing what is not there is a success unless it says "as is": then it is HYP_NOT_FOUND.
 * The setters check nothing in a record that they do not name.
 * ------------------------------------------------------------------------------------------------------- */

/* ------------------------------------------------------------------------------------------------------- *
 * MTU: in the kernel's portset and on each of its NICs, and as two global numbers, class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* The MTU of the portset in bytes, as the kernel's shell tells it; of a switch of any class. HYP_FAILURE: the
 * shell could not be run or told no number, as without a host. HYP_BAD_PARAM also: the stored portset name is
 * refused (nothing is run), or null mtu (the shell has been asked). */
QVS_API HYP_ReturnStatus VSDVS_GetMTU(const char *alias, int *mtu);

/*
 * Sets the MTU, 1280 to 9000 bytes, on the first 32 NICs, then on the portset, then in the properties. A step
 * that fails puts the old value back, last first; the NIC that refused it is not touched again. The second of
 * the two properties may fail without a word.
 *
 * HYP_BAD_PARAM, with nothing done: out of range (before the alias is resolved), or the stored portset name
 * is refused. HYP_FAILURE: the old MTU could not be read, a shell command failed, or the shell names a NIC
 * that cannot stand on a command line.
 */
QVS_API HYP_ReturnStatus VSDVS_SetMTU(const char *alias, uint32_t mtu);

/* ------------------------------------------------------------------------------------------------------- *
 * Mirror sessions: one list for a port, one for the host's uplinks; class POLICY
 *
 * A list is a header, the sessions, and the entities of all sessions: 20 + 232 * sessions + 52 * entities
 * bytes. The entities of a session are contiguous: destinations, sources of ingress, sources of egress. In
 * all five operations a null or empty port means the list of the uplinks.
 * ------------------------------------------------------------------------------------------------------- */

#define VSDVS_MIRROR_MAGIC 0xfacebeefu
#define VSDVS_MIRROR_VERSION 2u          /* typed sessions, which this library writes */
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
    uint32_t magic;
    uint32_t version;
    uint32_t sessionCount;
    uint32_t entityCount;
    uint32_t reserved; /* 0 */
} VSDVS_MirrorHeader;
QVS_ASSERT_SIZE(VSDVS_MirrorHeader, 20);

typedef struct QVS_PACKED VSDVS_MirrorSession {
    char sessionId[32];   /* zeros behind; no NUL when all 32 are used */
    char displayName[84]; /* NUL-terminated */
    uint32_t type;
    int32_t snapLength; /* bytes kept of each frame; -1 keeps all */
    uint32_t flags;
    uint16_t encapVlan; /* with VSDVS_MIRROR_DST_ENCAP */
    uint16_t wildIn;    /* wildcard form only */
    uint16_t wildOut;   /* wildcard form only */
    uint8_t reserved1[2];
    uint32_t samplingRate;
    uint8_t reserved2[8];
    uint8_t mirrorStack; /* with VSDVS_MIRROR_ERMIRROR_SRC: non-zero is true */
    uint8_t reserved3[67];
    uint32_t dstEntities;
    uint32_t srcInEntities;
    uint32_t srcOutEntities;
    uint32_t firstEntity; /* index of the session's first entity in the list's array */
} VSDVS_MirrorSession;
QVS_ASSERT_SIZE(VSDVS_MirrorSession, 232);
QVS_ASSERT_OFFSET(VSDVS_MirrorSession, samplingRate, 136);
QVS_ASSERT_OFFSET(VSDVS_MirrorSession, dstEntities, 216);

/*
 * What value holds depends on the session's type. Destinations: a NUL-terminated port or uplink name (MIXDST,
 * DVPORT, RMIRROR_DST), 32 characters of text (RMIRROR_SRC), an address (ERMIRROR_SRC: byte 0 non-zero for
 * IPv6, the 4 or 16 bytes from byte 4 in network order), 6 bytes of MAC address (LOGICAL_SPAN). Sources: a
 * 16-bit VLAN id (RMIRROR_DST), otherwise a NUL-terminated port or uplink name.
 */
typedef struct QVS_PACKED VSDVS_MirrorEntity {
    uint32_t word; /* not interpreted here */
    uint8_t value[48];
} VSDVS_MirrorEntity;
QVS_ASSERT_SIZE(VSDVS_MirrorEntity, 52);

/* Hands out the stored list. HYP_NOT_FOUND: never set. HYP_FAILURE: shorter than its counts say, or an alias
 * that does not resolve (a null one is HYP_BAD_PARAM). */
QVS_API HYP_ReturnStatus VSDVS_GetDVMirrorSessions(const char *alias, const char *port, void **list);

/* Replaces the list; one of no sessions is stored, too. HYP_BAD_PARAM, before the alias is resolved: null
 * list, a group of entities outside the array, an entity count that is not the sum of the groups, or a list
 * longer than 32 bits can say. Magic, version and identifiers are not checked. */
QVS_API HYP_ReturnStatus VSDVS_SetDVMirrorSessions(const char *alias, const char *port, const void *list);

/* Removes the list. */
QVS_API HYP_ReturnStatus VSDVS_ClearDVMirrorSessions(const char *alias, const char *port);

/* Adds the sessions of list, which stays as it is, behind the stored ones; never set counts as no sessions.
 * HYP_EXISTS: one of the identifiers is stored already (those of list are not compared with one another).
 * HYP_BAD_PARAM as for setting. HYP_FAILURE: the stored list is shorter than its counts say. HYP_NO_MEMORY:
 * no memory for the longer list, or longer than 32 bits can say. Nothing is stored after a failure. */
QVS_API HYP_ReturnStatus VSDVS_AppendDVMirrorSessions(const char *alias, const char *port, const void *list);

/* Removes the first session with this identifier (32 characters are compared) and its entities; with the last
 * session the key goes, as is. HYP_NOT_FOUND also: no list, or no such session. HYP_FAILURE: the stored list
 * is shorter than its counts say, or the session's entities are not in it; nothing changes. */
QVS_API HYP_ReturnStatus VSDVS_RemoveDVMirrorSession(const char *alias, const char *port,
                                                     const char *sessionId);

/* ------------------------------------------------------------------------------------------------------- *
 * VLAN: map, policy and priority of class POLICY, nested tagging of class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* Port types of a private VLAN. */
#define VSDVS_PVLAN_PROMISCUOUS 1u
#define VSDVS_PVLAN_ISOLATED 2u
#define VSDVS_PVLAN_COMMUNITY 3u

typedef struct QVS_PACKED VSDVS_PrivateVLAN {
    uint16_t primary;
    uint16_t secondary;
    uint8_t type;
    uint8_t reserved[3];
} VSDVS_PrivateVLAN;
QVS_ASSERT_SIZE(VSDVS_PrivateVLAN, 8);

typedef struct QVS_PACKED VSDVS_VLANRange {
    uint16_t first;
    uint16_t last; /* inclusive; equal to first for a single VLAN */
} VSDVS_VLANRange;
QVS_ASSERT_SIZE(VSDVS_VLANRange, 4);

#define VSDVS_VLAN_TRUNK 0x1u    /* guest VLAN tagging */
#define VSDVS_VLAN_PRIVATE 0x2u  /* the VLAN id is one of a private VLAN */
#define VSDVS_VLAN_PRIORITY 0x4u /* a priority is stored beside the policy */

/* The policy of a port; rangeCount trunk ranges of type VSDVS_VLANRange follow. */
typedef struct QVS_PACKED VSDVS_PortVLAN {
    uint16_t flags;
    uint16_t vlan; /* 0 without a flag: no VLAN */
    uint16_t reserved;
    uint16_t rangeCount;
} VSDVS_PortVLAN;
QVS_ASSERT_SIZE(VSDVS_PortVLAN, 8);

#define VSDVS_NO_PRIORITY 0xffffffffu

/* Hands out the private-VLAN map and its number of entries. HYP_NOT_FOUND also: never set. HYP_FAILURE: the
 * stored length is no multiple of 8. */
QVS_API HYP_ReturnStatus VSDVS_GetPrivateVLANMap(const char *alias, void **map, uint32_t *count);

/* Stores a map of count entries; a count of 0 clears it, as is, and map may then be null. HYP_BAD_PARAM also:
 * a map longer than 32 bits can say. */
QVS_API HYP_ReturnStatus VSDVS_SetPrivateVLANMap(const char *alias, const void *map, uint32_t count);

/* Hands out the policy and fills in the priority: 0 when none is stored or it cannot be read, whatever the
 * flags of the policy say. HYP_NOT_FOUND also: never set. HYP_FAILURE: the length is not what the range count
 * says. */
QVS_API HYP_ReturnStatus VSDVS_GetPortVLANPolicy(const char *alias, const char *port, void **policy,
                                                 uint32_t *priority);

/*
 * Stores a policy and keeps the priority in step.
 *
 *   vlan         VLAN id, not checked
 *   priority     priority tag, 32 bits, or VSDVS_NO_PRIORITY
 *   trunk        non-zero: guest VLAN tagging; without ranges all VLANs from 0 to 4094
 *   privateVlan  non-zero: the id is one of a private VLAN
 *   ranges       rangeCount VSDVS_VLANRange; stored with or without trunk
 *
 * HYP_BAD_PARAM also: null ranges with a count. HYP_NO_MEMORY: no memory for the record. A priority that
 * cannot be stored or removed leaves the policy stored; the status is the priority's.
 */
QVS_API HYP_ReturnStatus VSDVS_SetPortVLANPolicy(const char *alias, const char *port, uint16_t vlan,
                                                 uint32_t priority, uint8_t trunk, uint8_t privateVlan,
                                                 const void *ranges, uint16_t rangeCount);

/* Stores an empty policy and then removes the priority. HYP_NO_MEMORY: no memory for the record. */
QVS_API HYP_ReturnStatus VSDVS_ClearPortVLANPolicy(const char *alias, const char *port);

/* Whether nested VLAN tagging is on: 1 or 0, one byte; off when never set. HYP_FAILURE: the stored value has
 * not 4 bytes. Setting takes any non-zero value for on. */
QVS_API HYP_ReturnStatus VSDVS_GetPortNestedVLANTagging(const char *alias, const char *port,
                                                        uint8_t *enabled);
QVS_API HYP_ReturnStatus VSDVS_SetPortNestedVLANTagging(const char *alias, const char *port, uint8_t enabled);

/* ------------------------------------------------------------------------------------------------------- *
 * Port security and the extra Ethernet filter, class CONFIG
 * ------------------------------------------------------------------------------------------------------- */

/* A set bit denies. */
#define VSDVS_SECURITY_DENY_PROMISCUOUS 0x1u
#define VSDVS_SECURITY_DENY_MAC_CHANGE 0x2u
#define VSDVS_SECURITY_DENY_FORGED 0x4u

/* What a filter lets in. */
#define VSDVS_FILTER_UNICAST 0x1u
#define VSDVS_FILTER_MULTICAST 0x2u
#define VSDVS_FILTER_ALLMULTI 0x4u
#define VSDVS_FILTER_BROADCAST 0x8u
#define VSDVS_FILTER_PROMISC 0x10u
#define VSDVS_FILTER_USE_LADRF 0x20u
#define VSDVS_FILTER_SINK 0x10000u /* the port is a sink port */

typedef struct QVS_PACKED VSDVS_ExtraEthFilter {
    uint32_t flags;
    uint16_t addressCount; /* with VSDVS_FILTER_MULTICAST */
    uint8_t addresses[32][6];
    uint8_t reserved[2];
} VSDVS_ExtraEthFilter;
QVS_ASSERT_SIZE(VSDVS_ExtraEthFilter, 200);

/* The security mask; VSDVS_SECURITY_DENY_PROMISCUOUS when never set. HYP_FAILURE: the stored value has not 4
 * bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortSecurity(const char *alias, const char *port, uint32_t *mask);

/* Stores the mask. HYP_BAD_PARAM, before the alias is resolved: null mask, or one above 7. */
QVS_API HYP_ReturnStatus VSDVS_SetPortSecurity(const char *alias, const char *port, const uint32_t *mask);

/* Reads the filter into a VSDVS_ExtraEthFilter of the caller, stores it, and removes it. For the getter:
 * HYP_NOT_FOUND: never set. HYP_FAILURE: a stored record of another size, or an alias that does not resolve
 * (a null one is HYP_BAD_PARAM). */
QVS_API HYP_ReturnStatus VSDVS_GetExtraEthFilter(const char *alias, const char *port, void *filter);
QVS_API HYP_ReturnStatus VSDVS_SetExtraEthFilter(const char *alias, const char *port, const void *filter);
QVS_API HYP_ReturnStatus VSDVS_ClearExtraEthFilter(const char *alias, const char *port);

/* Whether the filter's sink bit is set: 1 or 0, one byte; off without a filter. HYP_FAILURE as for the getter
 * of the filter, also for an alias that does not resolve. */
QVS_API HYP_ReturnStatus VSDVS_IsSinkPortEnabled(const char *alias, const char *port, uint8_t *enabled);

/* Sets or clears the sink bit; a port without a filter gets one, of zeros when disabling. A filter whose bit
 * is as wanted is not stored again. HYP_FAILURE as for the getter of the filter, also for an alias that does
 * not resolve. */
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

/* What makes an uplink usable. */
#define VSDVS_SELECT_LINK_STATE 0x80u
#define VSDVS_SELECT_BEACON_STATE 0x20u

/* What happens when the uplink changes. */
#define VSDVS_BEHAVE_NOTIFY_SWITCH 0x20u
#define VSDVS_BEHAVE_ROLLING_FAILOVER 0x08u
#define VSDVS_BEHAVE_BEST_EFFORT 0x04u
#define VSDVS_BEHAVE_SHOTGUN 0x10u

#define VSDVS_TEAMING_MAX_UPLINKS 32u
#define VSDVS_TEAMING_OVERRIDE_SIZE 81u
#define VSDVS_LS_TEAMING_NAME_SIZE 136u
#define VSDVS_LS_TEAMING_ENTRY_SIZE 2748u

typedef struct QVS_PACKED VSDVS_TeamingPolicy {
    uint32_t loadBalancing;
    uint32_t linkSelection;
    uint32_t word; /* not interpreted here, kept as given */
    uint32_t linkBehaviour;
    uint32_t activeCount;
    uint32_t standbyCount; /* active and standby together at most 32 */
    /* The active uplinks in order of preference, then the standby ones; each NUL-terminated. */
    char uplinks[VSDVS_TEAMING_MAX_UPLINKS][81];
} VSDVS_TeamingPolicy;
QVS_ASSERT_SIZE(VSDVS_TeamingPolicy, 2616);

/* The policy of a switch, a VSDVS_TeamingPolicy of the caller, by alias or by switch identifier, which is not
 * looked up. HYP_NOT_FOUND also: never set. HYP_FAILURE: a stored record of another size. */
QVS_API HYP_ReturnStatus VSDVS_GetTeamingPolicyFromDVSID(const char *switchId, void *policy);
QVS_API HYP_ReturnStatus VSDVS_GetTeamingPolicy(const char *alias, void *policy);
/* Stores the 2616 bytes as they are, and removes them. */
QVS_API HYP_ReturnStatus VSDVS_SetTeamingPolicy(const char *alias, const void *policy);
QVS_API HYP_ReturnStatus VSDVS_ClearTeamingPolicy(const char *alias);

/* The policy of a port. A stored record of 8 bytes or more is read as far as it goes, at most 2616 bytes of
 * it; what lies behind in the caller's record stays as it was. HYP_NOT_FOUND also: never set. HYP_FAILURE: a
 * stored record of less than 8 bytes. Setting stores the 2616 bytes as they are. */
QVS_API HYP_ReturnStatus VSDVS_GetPortTeamingPolicy(const char *alias, const char *port, void *policy);
QVS_API HYP_ReturnStatus VSDVS_SetPortTeamingPolicy(const char *alias, const char *port, const void *policy);
QVS_API HYP_ReturnStatus VSDVS_ClearPortTeamingPolicy(const char *alias, const char *port);

/* The name of the policy that overrides a port's own: into 81 bytes of the caller, cleared first (unless
 * null) and all zeros after a failure, always terminated. HYP_NOT_FOUND also: never set. HYP_FAILURE: the
 * stored name has more than 81 bytes. A name to be set is stored with its NUL whatever its length. */
QVS_API HYP_ReturnStatus VSDVS_GetPortTeamingOverride(const char *alias, const char *port, char *name);
QVS_API HYP_ReturnStatus VSDVS_SetPortTeamingOverride(const char *alias, const char *port, const char *name);
QVS_API HYP_ReturnStatus VSDVS_ClearPortTeamingOverride(const char *alias, const char *port);

/* The table of logical-switch policies: a 32-bit count and that many entries of 2748 bytes. The getters hand
 * out what is stored without comparing its length with the count; the identifier is not looked up.
 * HYP_NOT_FOUND also: never set. HYP_FAILURE: a stored value of less than 4 bytes. Setting takes the length
 * from the count; HYP_BAD_PARAM also: longer than 32 bits can say. */
QVS_API HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTableFromDVSID(const char *switchId, void **table);
QVS_API HYP_ReturnStatus VSDVS_GetLSTeamingPolicyTable(const char *alias, void **table);
QVS_API HYP_ReturnStatus VSDVS_SetLSTeamingPolicy(const char *alias, const void *table);
QVS_API HYP_ReturnStatus VSDVS_ClearLSTeamingPolicy(const char *alias);

/* A port's choice in that table: into 136 bytes of the caller, cleared first (unless null) and all zeros
 * after a failure; a stored name that fills them has no NUL. HYP_NOT_FOUND also: never set. HYP_FAILURE: the
 * stored name has more than 136 bytes. A name to be set is stored with its NUL whatever its length. */
QVS_API HYP_ReturnStatus VSDVS_GetPortLSTeamingPolicyName(const char *alias, const char *port, char *name);
QVS_API HYP_ReturnStatus VSDVS_SetPortLSTeamingPolicy(const char *alias, const char *port, const char *name);
QVS_API HYP_ReturnStatus VSDVS_ClearPortLSTeamingPolicy(const char *alias, const char *port);

/* Whether the port always transmits through its uplink: 1 or 0, one byte. HYP_NOT_FOUND also: never set,
 * there is no default. A stored text other than "always" is 0. */
QVS_API HYP_ReturnStatus VSDVS_GetTxUplinkAlways(const char *alias, const char *port, uint8_t *always);
QVS_API HYP_ReturnStatus VSDVS_SetTxUplinkAlways(const char *alias, const char *port, uint8_t always);

/* ------------------------------------------------------------------------------------------------------- *
 * MAC learning, class CONFIG; kept per host, but the port's own per port
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

/* The record under the port's key; the operations exchange its last 10 bytes. */
typedef struct QVS_PACKED VSDVS_PortMACManagement {
    uint8_t macChange; /* non-zero: allowed; follows the port's security when it is stored */
    VSDVS_PortMACLearning learning;
} VSDVS_PortMACManagement;
QVS_ASSERT_SIZE(VSDVS_PortMACManagement, 11);

/* A VSDVS_MACLearning of the caller; never set: 600 seconds, 65536 addresses, and the reserved byte as it
 * was. HYP_FAILURE: a stored record of another size. */
QVS_API HYP_ReturnStatus VSDVS_GetMACLearning(const char *alias, void *record);
/* Stores the record. HYP_BAD_PARAM, before the alias is resolved: null record, or an agingTime above 1000000.
 * Clearing first reads the record, and a failure to read it is the answer. */
QVS_API HYP_ReturnStatus VSDVS_SetMACLearning(const char *alias, const void *record);
QVS_API HYP_ReturnStatus VSDVS_ClearMACLearning(const char *alias);

/* A VSDVS_PortMACLearning of the caller; never set: off, off, 4096, allow. HYP_NOT_FOUND also: no such port
 * in the snapshot. HYP_FAILURE: a stored record that has not 11 bytes. */
QVS_API HYP_ReturnStatus VSDVS_GetPortMACLearning(const char *alias, const char *port, void *value);
/* Stores it with the byte in front that says whether the port may change its MAC address: only if its
 * security mask is stored, can be read and does not deny it. The port is not looked for in the snapshot. */
QVS_API HYP_ReturnStatus VSDVS_SetPortMACLearning(const char *alias, const char *port, const void *value);

/* Learning of static addresses, caching for the overlay, and acceptance of static addresses: 1 or 0, one
 * byte; off when never set, and for any stored text that does not begin with "true". Clearing learnStatic and
 * staticMACAllow is as is; clearing the caching first reads it, and a failure to read it is the answer. */
QVS_API HYP_ReturnStatus VSDVS_GetLearnStatic(const char *alias, uint8_t *enabled);
QVS_API HYP_ReturnStatus VSDVS_SetLearnStatic(const char *alias, uint8_t enable);
QVS_API HYP_ReturnStatus VSDVS_ClearLearnStatic(const char *alias);
QVS_API HYP_ReturnStatus VSDVS_SetCaching(const char *alias, uint8_t enable);
QVS_API HYP_ReturnStatus VSDVS_ClearCaching(const char *alias);
QVS_API HYP_ReturnStatus VSDVS_GetStaticMACAllow(const char *alias, uint8_t *enabled);
QVS_API HYP_ReturnStatus VSDVS_SetStaticMACAllow(const char *alias, uint8_t enable);
QVS_API HYP_ReturnStatus VSDVS_ClearStaticMACAllow(const char *alias);

/* ------------------------------------------------------------------------------------------------------- *
 * Multicast, class CONFIG
 *
 * An address list is a count byte, at most 25, and that many 6-byte MAC addresses. The operations on the
 * lists answer HYP_BAD_PARAM for an alias that does not resolve and for no such port in the snapshot.
 * ------------------------------------------------------------------------------------------------------- */

#define VSDVS_MCAST_LEGACY 0u
#define VSDVS_MCAST_SNOOPING 1u
#define VSDVS_MCAST_MAX_ADDRESSES 25u

#define VSDVS_RCF_CBPF 0u
#define VSDVS_RCF_EBPF 1u

/* The filter mode; never set, the kernel is asked for that of the running switch, and its number is passed
 * on. HYP_FAILURE: a stored mode that nobody knows. Otherwise the status of the device's errno when the
 * kernel was asked. */
QVS_API HYP_ReturnStatus VSDVS_GetMcastFilterMode(const char *alias, uint32_t *mode);

/* Stores the mode. HYP_BAD_PARAM, before the alias is resolved: no such mode. HYP_NOT_SUPPORTED: a switch of
 * version 107 or later. HYP_NOT_FOUND also: the switch has no version. HYP_FAILURE: the stored version has
 * less than 4 bytes. */
QVS_API HYP_ReturnStatus VSDVS_SetMcastFilterMode(const char *alias, uint32_t mode);

/* The instruction type of the receive filter; VSDVS_RCF_CBPF unless it can be read and is known. The output
 * is set to 0 first. The only failures are those of the alias and null type. */
QVS_API HYP_ReturnStatus VSDVS_GetRCFType(const char *alias, uint32_t *type);
/* Stores the type. HYP_BAD_PARAM, before the alias is resolved: no such type. */
QVS_API HYP_ReturnStatus VSDVS_SetRCFType(const char *alias, uint32_t type);

/* The list of a switch, kept per host. For the getter, HYP_NOT_FOUND: never set; HYP_FAILURE: the length is
 * not what the count byte says (which may be above 25). For the setter, HYP_LIMIT_EXCEEDED, before anything
 * else: a count above 25; HYP_NO_MEMORY: no memory for the list; a count of 0 stores an empty list, and
 * addresses may then be null. Clearing is as is. */
QVS_API HYP_ReturnStatus VSDVS_GetMcastUserLegacyEntries(const char *alias, void **list);
QVS_API HYP_ReturnStatus VSDVS_SetMcastUserLegacyEntries(const char *alias, uint32_t count,
                                                         const void *addresses);
QVS_API HYP_ReturnStatus VSDVS_ClearMcastUserLegacyEntries(const char *alias);

/* The list of a port, which overrides the switch's; the statuses are those of the list of a switch. */
QVS_API HYP_ReturnStatus VSDVS_GetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                             void **list);
QVS_API HYP_ReturnStatus VSDVS_SetPortMcastUserLegacyEntries(const char *alias, const char *port,
                                                             uint32_t count, const void *addresses);
QVS_API HYP_ReturnStatus VSDVS_ClearPortMcastUserLegacyEntries(const char *alias, const char *port);

QVS_EXTERN_C_END

#endif
