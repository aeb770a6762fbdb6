/*
 * The running state of the switches, straight from the kernel's device /dev/vswitch.
 *
 * Names are the kernel's own and are cut, never refused, when they do not fit the request: a switch name (its
 * portset name) at 127 characters, an uplink name at 31. What comes back through a pointer is malloc'd and is
 * released with VSHYP_FreeMemory; the records in it are the kernel's own and are passed on as they are. Safe
 * from any thread.
 *
 * Four things hold for every function here:
 *
 *   - HYP_BAD_PARAM: a null argument, before the kernel is asked.
 *   - A device or a request that fails gives the status of its errno: HYP_NOT_FOUND, of ENOENT, on a
 *     machine without the device, so without a host. What the kernel says of a switch, port or uplink that
 *     it does not have is its own (HYP_NOT_FOUND on the emulated host).
 *   - An alias is looked up in the snapshot (dvs.h), where the switch may be of any class. HYP_NOT_FOUND:
 *     no switch has it. A switchName is not looked up, and neither is a port.
 *   - A buffer of the caller is as it was after a failure, or all zeros where it says "cleared first"
 *     (unless it is null, or an alias does not resolve): never a part of an answer.
 *
 * A counted list is a VSHYP_ListHeader followed by count entries, back to back; a list without entries is a
 * header that says so, never null. Its pointer is untouched when the first request fails and null after every
 * later failure. HYP_NO_MEMORY: no memory for it, or a list longer than 32 bits can say. The count is the
 * kernel's own.
 *
 *   void *uplinks = NULL;
 *   if (VSHYP_GetUplinks("sw1", &uplinks) == HYP_OK)
 *       printf("%u uplinks\n", ((VSHYP_ListHeader *)uplinks)->count);
 *   VSHYP_FreeMemory(uplinks);
 */
#ifndef QVS_VSHYP_H
#define QVS_VSHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

typedef struct VSHYP_ListHeader {
    uint32_t count; /* entries that follow */
    uint32_t word;  /* the kernel's; for VSHYP_GetSwitches the selector */
} VSHYP_ListHeader;
QVS_ASSERT_SIZE(VSHYP_ListHeader, 8);

/* Sizes in bytes of the kernel's records. */
#define VSHYP_UPLINK_ENTRY_SIZE 36u
#define VSHYP_LAG_TABLE_SIZE 35588u
#define VSHYP_SWITCH_INFO_SIZE 220u
#define VSHYP_PORT_INFO_SIZE 1458u
#define VSHYP_TEAM_UPLINK_HINT_SIZE 32u
#define VSHYP_UPLINK_DV_PORT_ID_SIZE 48u
#define VSHYP_SWITCH_NAME_ENTRY_SIZE 128u /* VSHYP_GetSwitches with selector 1 */
#define VSHYP_SWITCH_ALIAS_ENTRY_SIZE 81u /* VSHYP_GetSwitches with any other */
#define VSHYP_SELECT_SWITCH_NAMES 1u

/* Releases any buffer of this family; null is fine. */
QVS_API void VSHYP_FreeMemory(void *pointer);

/* The uplinks of a switch, a counted list of 36 bytes each. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinks(const char *switchName, void **uplinks);

/* Whether an uplink's link, or its LACP link, is up: 1 or 0; untouched on failure. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLinkState(const char *switchName, const char *uplinkName,
                                                  uint32_t *up);
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLACPLinkState(const char *switchName, const char *uplinkName,
                                                      uint32_t *up);

/* The link aggregation table, 35588 bytes; the pointer is untouched by any failure. HYP_NO_MEMORY, before
 * the kernel is asked. */
QVS_API HYP_ReturnStatus VSHYP_GetLAGTable(const char *switchName, void **lagTable);

/* The information block of a switch, 220 bytes: by alias into a new buffer, by kernel name into the caller's,
 * which is cleared first. The pointer is untouched when the request fails and null when memory runs out
 * (HYP_NO_MEMORY). */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchInfo(const char *alias, void **info);
QVS_API HYP_ReturnStatus VSHYP_GetVSInfo(const char *switchName, void *info);

/* The ports of a switch, a counted list of 1458-byte blocks, and the block of one port, whose pointer is
 * untouched when the request fails and null when memory runs out (HYP_NO_MEMORY). For the one port, first the
 * statuses of VSDVS_DvPortIDToPortID: HYP_BAD_PARAM also: a switch of another class than "vswitch";
 * HYP_FAILURE: no port number in the port's record; those of the state library, such as HYP_NOT_FOUND for no
 * such port. Null info is HYP_BAD_PARAM only once the kernel has answered. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchPortInfo(const char *alias, void **ports);
QVS_API HYP_ReturnStatus VSHYP_GetPortInfo(const char *alias, const char *dvPortId, void **info);

/* The uplink that teaming would choose for the port with this kernel number: 32 bytes into the caller's
 * buffer, which is cleared first. */
QVS_API HYP_ReturnStatus VSHYP_PortGetTeamUplinkHint(uint32_t portId, void *hint);

/* The port identifier behind an uplink: 48 bytes into the caller's buffer, which is cleared first, also
 * when uplinkName is null. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkDVPortID(const char *uplinkName, void *identity);

/* The switches of the host, a counted list: kernel names of 128 bytes for selector VSHYP_SELECT_SWITCH_NAMES,
 * aliases of 81 bytes for any other. The pointer is null first and after every failure. HYP_FAILURE: the
 * kernel did not answer the first request, whatever its errno, as without a host. HYP_NO_MEMORY. Else the
 * status of the second request. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitches(uint32_t selector, void **switches);

/* The identifier the kernel has for an alias (80 characters of it are sent), into 64 bytes of the caller,
 * cleared first: all of them are the kernel's, without a NUL where it wrote none. The snapshot is not asked.
 */
QVS_API HYP_ReturnStatus VSHYP_DVSAliasToSwitchId(const char *alias, void *switchId);

/* Takes an uplink administratively up (state non-zero) or down. */
QVS_API HYP_ReturnStatus VSHYP_SetUplinkAdminLinkState(const char *switchName, const char *uplinkName,
                                                       int32_t state);

/* Has the kernel place the devices of a switch on NUMA nodes anew. */
QVS_API HYP_ReturnStatus VSHYP_RefreshDevNUMAInfo(const char *switchName);

/* ------------------------------------------------------------------------------------------------------- *
 * MAC tables and MAC learning
 *
 * A switch is named by its alias unless a parameter is called switchName. A distributed port is addressed by
 * its text (47 characters are sent), and its switch must then be of class "vswitch": HYP_BAD_PARAM also for
 * one of another class.
 * ------------------------------------------------------------------------------------------------------- */

#define VSHYP_MAC_ENTRY_SIZE 86u
#define VSHYP_STATIC_LECTX_SIZE 529u
#define VSHYP_L2_SECURITY_SIZE 8u
#define VSHYP_PORT_MAC_LEARNING_SIZE 14u
#define VSHYP_MAC_LEARNING_STATS_SIZE 52u
#define VSHYP_MAC_LEARNING_INFO_SIZE 88u

/* What the kernel keeps for all switches of the host. */
typedef struct QVS_PACKED VSHYP_GlobalMACLearningProps {
    uint64_t first;
    uint16_t second;
} VSHYP_GlobalMACLearningProps;
QVS_ASSERT_SIZE(VSHYP_GlobalMACLearningProps, 10);

/* Counted lists of MAC entries, 86 bytes each: of a switch, of its team, of a port. The selector byte is the
 * kernel's. */
QVS_API HYP_ReturnStatus VSHYP_GetMACTable(const char *alias, uint8_t tableSelector, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetTeamMACTable(const char *alias, uint8_t tableSelector, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetPortMACTable(const char *alias, const char *dvPortId, uint8_t tableSelector,
                                               void **table);

/* Counted lists of static learning contexts, 529 bytes each: of a switch, of a port. */
QVS_API HYP_ReturnStatus VSHYP_GetStaticLectx(const char *alias, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetPortStaticLectx(const char *alias, const char *dvPortId, void **table);

/* Counted lists of a switch: learning per port (14 bytes each), learning statistics (52), layer-2 security
 * (8). */
QVS_API HYP_ReturnStatus VSHYP_GetMACLearningAllPorts(const char *alias, void **ports);
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMACLearningStats(const char *alias, void **stats);
QVS_API HYP_ReturnStatus VSHYP_GetL2Security(const char *alias, void **table);

/* Learning statistics of a port - named first, its switch second - 52 bytes into the caller's buffer, which
 * is cleared first. */
QVS_API HYP_ReturnStatus VSHYP_GetPortMACLearningStats(const char *dvPortId, const char *alias, void *stats);

/* Learning information of a switch: 88 bytes into the caller's buffer, untouched on failure. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMACLearningInfo(const char *switchName, void *info);

/* The host-wide learning properties, a VSHYP_GlobalMACLearningProps of the caller. */
QVS_API HYP_ReturnStatus VSHYP_GetGlobalMACLearningProps(void *props);
QVS_API HYP_ReturnStatus VSHYP_SetGlobalMACLearningProps(const void *props);

/*
 * Adds an entry, 86 bytes, to a port's MAC table, or removes it. The port goes by dvPortId, or when that is
 * null by its kernel number; only then is portNumber used. The switch must be of class "vswitch"
 * (HYP_BAD_PARAM), except for adding by number. Whether the port and the entry exist is the kernel's to
 * judge.
 */
QVS_API HYP_ReturnStatus VSHYP_SetPortMACTable(const char *alias, const char *dvPortId, uint32_t portNumber,
                                               const void *macEntry);
QVS_API HYP_ReturnStatus VSHYP_ClearPortMACTable(const char *alias, const char *dvPortId, uint32_t portNumber,
                                                 const void *macEntry);

/* ------------------------------------------------------------------------------------------------------- *
 * Mirror sessions, multicast, teaming and options at run time
 * ------------------------------------------------------------------------------------------------------- */

#define VSHYP_RARP_STATS_SIZE 16u
#define VSHYP_SERVICE_PORT_TEAMING_STATS_SIZE 48u
#define VSHYP_RUNTIME_OPTIONS_SIZE 4096u
#define VSHYP_PROMISC_DST_SIZE 4u
#define VSHYP_MIRROR_SESSION_ID_SIZE 32u
#define VSHYP_MIRROR_STATS_SIZE 121u
#define VSHYP_MIRROR_AGENT_STATS_SIZE 76u
#define VSHYP_SWITCH_MCAST_FILTER_SIZE 20u
#define VSHYP_LS_TEAMING_NAME_SIZE 136u
#define VSHYP_LS_TEAMING_ENTRY_SIZE 2748u

/* Kinds of multicast filters, and with them the size of an address: 6, 4 or 16 bytes. */
#define VSHYP_MCAST_MAC 0
#define VSHYP_MCAST_IPV4 2
#define VSHYP_MCAST_IPV6 3

/* Reverse-ARP statistics (16 bytes) and service-port teaming statistics (48) of a switch, by its kernel name,
 * into the caller's buffer, which is cleared first, also when switchName is null. */
QVS_API HYP_ReturnStatus VSHYP_GetRARPStats(const char *switchName, void *stats);
QVS_API HYP_ReturnStatus VSHYP_GetServicePortTeamingStats(const char *switchName, void *stats);

/* The options named by count identifiers, or all of them when there are none: a block of 4096 bytes. Null
 * optionIds, or a count of 0, means all. The pointer is null after a failure. HYP_NO_MEMORY, before the
 * kernel is asked. */
QVS_API HYP_ReturnStatus VSHYP_GetRuntimeOptions(const uint16_t *optionIds, uint16_t count, void **options);

/* Changes options; the first word of the block is its length in bytes, and as many bytes of it are sent. */
QVS_API HYP_ReturnStatus VSHYP_SetRuntimeOptions(const uint32_t *block);

/* Counted lists of a switch: active destinations of its promiscuous session (4 bytes each), identifiers of
 * its mirror sessions (32). */
QVS_API HYP_ReturnStatus VSHYP_GetPromiscSessionActiveDsts(const char *alias, void **dsts);
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorSessionIDs(const char *alias, void **ids);

/* Statistics of one mirror session (31 characters of its name are sent), 121 bytes, and of the mirror agent,
 * 76 bytes, into the caller's buffer, untouched on failure. The request for the agent's sends no input. */
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorSessionStats(const char *alias, const char *sessionName,
                                                       void *stats);
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorAgentWorldStats(void *stats);

/* The multicast filter mode that the running switch has, as the kernel numbers it; untouched on failure.
 */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilterMode(const char *switchName, uint32_t *mode);

/* The multicast filters of a port, a counted list of addresses of the kind asked for. HYP_BAD_PARAM
 * also: no such kind; the kernel is asked for the count all the same, and a failure of that comes first. */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilters(const char *switchName, uint32_t filterPort,
                                               int32_t filterType, void **filters);

/* The multicast filters of a switch, a counted list of 20-byte entries; value is the kernel's. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMcastFilters(const char *switchName, uint32_t value, void **filters);

/* Statistics of one group (4 or 16 bytes): a 28-byte header with a 32-bit count at byte 20, and that many
 * addresses. HYP_BAD_PARAM also, before the kernel is asked: another kind than IPv4 and IPv6. */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilterStats(const char *switchName, uint32_t filterPort,
                                                   int32_t filterType, const void *group, void **stats);

/* The teaming policy of the port with this kernel number: a name of 136 bytes into the caller's buffer, which
 * is cleared first. */
QVS_API HYP_ReturnStatus VSHYP_GetPortLSTeamingPolicyName(uint32_t portId, char *name);

/* The logical-switch teaming policies of a switch: a counted list of 2748 bytes each, but with the 32-bit
 * count alone for a header. */
QVS_API HYP_ReturnStatus VSHYP_GetLSTeamingPolicyTable(const char *alias, void **table);

/* ------------------------------------------------------------------------------------------------------- *
 * Route table
 * ------------------------------------------------------------------------------------------------------- */

/* Sends a block to the route-table module under a command of 32 bits; a block starts with a 32-bit count and
 * is count * 136 + 9 bytes long for an operation, count * 5 + 132 for a modification. HYP_BAD_PARAM
 * also: a block longer than 32 bits can say. */
QVS_API HYP_ReturnStatus VSHYP_RTMOp(const uint32_t *block, uint32_t command);
QVS_API HYP_ReturnStatus VSHYP_RTMModOp(const uint32_t *block, uint32_t command);

/* An operation on a port: two words and a flag byte, sent as given. */
QVS_API HYP_ReturnStatus VSHYP_RTMPortOp(uint32_t first, uint32_t second, uint8_t flag);

QVS_EXTERN_C_END

#endif
