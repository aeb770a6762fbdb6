/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The running state of the switches, read from the kernel device /dev/vswitch.
 *
 * The following rules hold for every function:
 *
 *   - Text arguments are NUL-terminated. The function borrows all arguments for the duration of the call.
 *   - A switch name is the name of its portset in the kernel. The function truncates names that do not fit
 *     into the request: a switch name to 127 characters, an uplink name to 31.
 *   - A result that is returned through a pointer is allocated with malloc. The caller releases it with
 *     VSHYP_FreeMemory. The kernel defines the layout of the records, which are passed on unchanged.
 *   - If an argument is null, the status is HYP_BAD_PARAM, and the kernel is not asked.
 *   - If the device or a request fails, the status is that of the errno. On a machine without the device, and
 *     therefore without a host, it is HYP_NOT_FOUND (ENOENT). The kernel decides which errno it returns for a
 *     switch, port or uplink that does not exist (HYP_NOT_FOUND on the emulated host).
 *   - An alias is looked up in the snapshot (dvs.h). The switch may have any class. HYP_NOT_FOUND: no switch
 *     has the alias. A switchName is not looked up, and neither is a port.
 *   - On failure, a buffer of the caller is unchanged, or all zeros where the comment says "cleared first"
 *     (unless the buffer is null or an alias cannot be resolved). It never contains part of an answer.
 *   - The functions are thread-safe.
 *
 * A counted list is a VSHYP_ListHeader followed by count entries without gaps. A list without entries
 * consists of the header alone; the pointer is never null. If the first request fails, the pointer is
 * unchanged. After every later failure it is null. HYP_NO_MEMORY: no memory for the list, or its size exceeds
 * 32 bits. The count is that of the kernel.
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
    uint32_t word;  /* defined by the kernel; for VSHYP_GetSwitches the selector */
} VSHYP_ListHeader;
QVS_ASSERT_SIZE(VSHYP_ListHeader, 8);

/* Sizes in bytes of the records of the kernel. */
#define VSHYP_UPLINK_ENTRY_SIZE 36u
#define VSHYP_LAG_TABLE_SIZE 35588u
#define VSHYP_SWITCH_INFO_SIZE 220u
#define VSHYP_PORT_INFO_SIZE 1458u
#define VSHYP_TEAM_UPLINK_HINT_SIZE 32u
#define VSHYP_UPLINK_DV_PORT_ID_SIZE 48u
#define VSHYP_SWITCH_NAME_ENTRY_SIZE 128u /* VSHYP_GetSwitches with selector 1 */
#define VSHYP_SWITCH_ALIAS_ENTRY_SIZE 81u /* VSHYP_GetSwitches with any other selector */
#define VSHYP_SELECT_SWITCH_NAMES 1u

/* Releases a result of this family. Null is allowed. */
QVS_API void VSHYP_FreeMemory(void *pointer);

/* Returns the uplinks of a switch, a counted list of entries of 36 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinks(const char *switchName, void **uplinks);

/* Reads whether the link of an uplink is up: stores 1 or 0 in 32 bits; unchanged on failure. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLinkState(const char *switchName, const char *uplinkName,
                                                  uint32_t *up);

/* Reads whether the LACP link of an uplink is up: stores 1 or 0 in 32 bits; unchanged on failure. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLACPLinkState(const char *switchName, const char *uplinkName,
                                                      uint32_t *up);

/* Returns the link aggregation table, VSHYP_LAG_TABLE_SIZE (35588) bytes. The pointer is unchanged on
 * failure. HYP_NO_MEMORY: memory runs out, before the kernel is asked. */
QVS_API HYP_ReturnStatus VSHYP_GetLAGTable(const char *switchName, void **lagTable);

/* Returns the information block of a switch by its alias, VSHYP_SWITCH_INFO_SIZE (220) bytes in a new buffer.
 * The pointer is unchanged when the request fails, and null when memory runs out (HYP_NO_MEMORY). */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchInfo(const char *alias, void **info);

/* Reads the information block of a switch by its kernel name into info, 220 bytes of the caller, cleared
 * first. */
QVS_API HYP_ReturnStatus VSHYP_GetVSInfo(const char *switchName, void *info);

/* Returns the information blocks of all ports of a switch, a counted list of entries of 1458 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchPortInfo(const char *alias, void **ports);

/*
 * Returns the information block of one port, VSHYP_PORT_INFO_SIZE (1458) bytes. The pointer is unchanged when
 * the request fails, and null when memory runs out (HYP_NO_MEMORY).
 *
 * The function first calls VSDVS_DvPortIDToPortID and returns its failures: HYP_BAD_PARAM when the class of
 * the switch is not "vswitch", HYP_FAILURE when the record of the port contains no port number, and those of
 * the state library, such as HYP_NOT_FOUND when there is no such port. If info is null, the status is
 * HYP_BAD_PARAM only after the kernel has answered.
 */
QVS_API HYP_ReturnStatus VSHYP_GetPortInfo(const char *alias, const char *dvPortId, void **info);

/* Reads the uplink that teaming would select for the port with this kernel port number into hint, 32 bytes of
 * the caller, cleared first. */
QVS_API HYP_ReturnStatus VSHYP_PortGetTeamUplinkHint(uint32_t portId, void *hint);

/* Reads the identifier of the port that is bound to an uplink into identity, 48 bytes of the caller, cleared
 * first, also when uplinkName is null. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkDVPortID(const char *uplinkName, void *identity);

/*
 * Returns the switches of the host, a counted list. The pointer is null after every failure.
 *
 *   selector  VSHYP_SELECT_SWITCH_NAMES for kernel names of 128 bytes, any other value for aliases of 81
 * bytes
 *
 * HYP_FAILURE: the kernel did not answer the first request, whatever the errno, for example without a host.
 * HYP_NO_MEMORY: as for all lists. Otherwise the status of the second request.
 */
QVS_API HYP_ReturnStatus VSHYP_GetSwitches(uint32_t selector, void **switches);

/* Reads the identifier that the kernel assigns to an alias into switchId, 64 bytes of the caller, cleared
 * first. All 64 bytes come from the kernel, possibly without a NUL. At most 80 characters of the alias are
 * sent. The snapshot is not read. */
QVS_API HYP_ReturnStatus VSHYP_DVSAliasToSwitchId(const char *alias, void *switchId);

/* Sets the administrative state of an uplink: up when state is not 0, otherwise down. */
QVS_API HYP_ReturnStatus VSHYP_SetUplinkAdminLinkState(const char *switchName, const char *uplinkName,
                                                       int32_t state);

/* Requests that the kernel assigns the devices of a switch to NUMA nodes again. */
QVS_API HYP_ReturnStatus VSHYP_RefreshDevNUMAInfo(const char *switchName);

/* ------------------------------------------------------------------------------------------------------- *
 * MAC tables and MAC learning
 *
 * A switch is given by its alias, unless the parameter is called switchName. A port is given by its
 * identifier, of which at most 47 characters are sent. Its switch must then have class "vswitch"; otherwise
 * the status is HYP_BAD_PARAM.
 * ------------------------------------------------------------------------------------------------------- */

#define VSHYP_MAC_ENTRY_SIZE 86u
#define VSHYP_STATIC_LECTX_SIZE 529u
#define VSHYP_L2_SECURITY_SIZE 8u
#define VSHYP_PORT_MAC_LEARNING_SIZE 14u
#define VSHYP_MAC_LEARNING_STATS_SIZE 52u
#define VSHYP_MAC_LEARNING_INFO_SIZE 88u

/* The learning properties of the kernel for all switches of the host. */
typedef struct QVS_PACKED VSHYP_GlobalMACLearningProps {
    uint64_t first;
    uint16_t second;
} VSHYP_GlobalMACLearningProps;
QVS_ASSERT_SIZE(VSHYP_GlobalMACLearningProps, 10);

/* Return the MAC table of a switch, of its team, or of a port, a counted list of entries of 86 bytes. The
 * kernel defines the meaning of tableSelector, 8 bits. */
QVS_API HYP_ReturnStatus VSHYP_GetMACTable(const char *alias, uint8_t tableSelector, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetTeamMACTable(const char *alias, uint8_t tableSelector, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetPortMACTable(const char *alias, const char *dvPortId, uint8_t tableSelector,
                                               void **table);

/* Return the static learning contexts of a switch, or of a port, a counted list of entries of 529 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetStaticLectx(const char *alias, void **table);
QVS_API HYP_ReturnStatus VSHYP_GetPortStaticLectx(const char *alias, const char *dvPortId, void **table);

/* Returns the learning state of all ports of a switch, a counted list of entries of 14 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetMACLearningAllPorts(const char *alias, void **ports);

/* Returns the learning statistics of a switch, a counted list of entries of 52 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMACLearningStats(const char *alias, void **stats);

/* Returns the layer-2 security of a switch, a counted list of entries of 8 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetL2Security(const char *alias, void **table);

/* Reads the learning statistics of a port into stats, 52 bytes of the caller, cleared first. The port is the
 * first argument, its switch the second. */
QVS_API HYP_ReturnStatus VSHYP_GetPortMACLearningStats(const char *dvPortId, const char *alias, void *stats);

/* Reads the learning information of a switch into info, 88 bytes of the caller, unchanged on failure. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMACLearningInfo(const char *switchName, void *info);

/* Reads the learning properties of the host into props, a VSHYP_GlobalMACLearningProps of the caller. */
QVS_API HYP_ReturnStatus VSHYP_GetGlobalMACLearningProps(void *props);

/* Sets the learning properties of the host from props, a VSHYP_GlobalMACLearningProps. */
QVS_API HYP_ReturnStatus VSHYP_SetGlobalMACLearningProps(const void *props);

/*
 * Add an entry to the MAC table of a port (VSHYP_SetPortMACTable), and remove it (VSHYP_ClearPortMACTable).
 *
 *   dvPortId    port identifier, or null to use portNumber
 *   portNumber  kernel port number, 32 bits; ignored unless dvPortId is null
 *   macEntry    the entry, VSHYP_MAC_ENTRY_SIZE (86) bytes
 *
 * HYP_BAD_PARAM also: the class of the switch is not "vswitch". VSHYP_SetPortMACTable does not check the
 * class when dvPortId is null. The kernel checks whether the port and the entry exist.
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

/* Kinds of multicast filters. They determine the size of an address: 6, 4 or 16 bytes. */
#define VSHYP_MCAST_MAC 0
#define VSHYP_MCAST_IPV4 2
#define VSHYP_MCAST_IPV6 3

/* Reads the reverse-ARP statistics of a switch into stats, 16 bytes of the caller, cleared first, also when
 * switchName is null. */
QVS_API HYP_ReturnStatus VSHYP_GetRARPStats(const char *switchName, void *stats);

/* Reads the service-port teaming statistics of a switch into stats, 48 bytes of the caller, cleared first,
 * also when switchName is null. */
QVS_API HYP_ReturnStatus VSHYP_GetServicePortTeamingStats(const char *switchName, void *stats);

/*
 * Returns runtime options, a block of VSHYP_RUNTIME_OPTIONS_SIZE (4096) bytes. The pointer is null on
 * failure.
 *
 *   optionIds  count identifiers of options, 16 bits each; null selects all options
 *   count      number of identifiers; 0 selects all options
 *
 * HYP_NO_MEMORY: memory runs out, before the kernel is asked.
 */
QVS_API HYP_ReturnStatus VSHYP_GetRuntimeOptions(const uint16_t *optionIds, uint16_t count, void **options);

/* Sets runtime options. The first 32-bit word of the block is its length in bytes; the function sends that
 * many bytes. */
QVS_API HYP_ReturnStatus VSHYP_SetRuntimeOptions(const uint32_t *block);

/* Returns the active destinations of the promiscuous session of a switch, a counted list of entries of 4
 * bytes.
 */
QVS_API HYP_ReturnStatus VSHYP_GetPromiscSessionActiveDsts(const char *alias, void **dsts);

/* Returns the identifiers of the mirror sessions of a switch, a counted list of entries of 32 bytes. */
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorSessionIDs(const char *alias, void **ids);

/* Reads the statistics of a mirror session into stats, 121 bytes of the caller, unchanged on failure. At most
 * 31 characters of the session name are sent. */
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorSessionStats(const char *alias, const char *sessionName,
                                                       void *stats);

/* Reads the statistics of the mirror agent into stats, 76 bytes of the caller, unchanged on failure. The
 * request sends no input. */
QVS_API HYP_ReturnStatus VSHYP_GetDVMirrorAgentWorldStats(void *stats);

/* Reads the multicast filter mode of the running switch, the number of the kernel, 32 bits; unchanged on
 * failure. */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilterMode(const char *switchName, uint32_t *mode);

/*
 * Returns the multicast filters of a port, a counted list of addresses.
 *
 *   filterPort  kernel port number, 32 bits
 *   filterType  kind of address, VSHYP_MCAST_...
 *
 * HYP_BAD_PARAM also: the kind is unknown. The function checks this after the request for the count; if that
 * request fails, it returns the status of the request.
 */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilters(const char *switchName, uint32_t filterPort,
                                               int32_t filterType, void **filters);

/* Returns the multicast filters of a switch, a counted list of entries of 20 bytes. The kernel defines the
 * meaning of value, 32 bits. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchMcastFilters(const char *switchName, uint32_t value, void **filters);

/*
 * Returns the statistics of a multicast group: a 28-byte header with a 32-bit count at byte 20, and that many
 * addresses.
 *
 *   filterPort  kernel port number, 32 bits
 *   filterType  VSHYP_MCAST_IPV4 or VSHYP_MCAST_IPV6
 *   group       address of the group, 4 or 16 bytes
 *
 * HYP_BAD_PARAM also, before the kernel is asked: the kind is neither IPv4 nor IPv6.
 */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilterStats(const char *switchName, uint32_t filterPort,
                                                   int32_t filterType, const void *group, void **stats);

/* Reads the name of the teaming policy of the port with this kernel port number into name, 136 bytes of the
 * caller, cleared first. */
QVS_API HYP_ReturnStatus VSHYP_GetPortLSTeamingPolicyName(uint32_t portId, char *name);

/* Returns the logical-switch teaming policies of a switch: a counted list of entries of 2748 bytes whose
 * header is only the 32-bit count. */
QVS_API HYP_ReturnStatus VSHYP_GetLSTeamingPolicyTable(const char *alias, void **table);

/* ------------------------------------------------------------------------------------------------------- *
 * Route table
 * ------------------------------------------------------------------------------------------------------- */

/*
 * Send a block to the route-table module, for an operation (VSHYP_RTMOp) or a modification (VSHYP_RTMModOp).
 *
 *   block    starts with a 32-bit count; it has count * 136 + 9 bytes for an operation, and count * 5 + 132
 *            bytes for a modification
 *   command  32 bits, passed on to the kernel
 *
 * HYP_BAD_PARAM also: the size of the block exceeds 32 bits.
 */
QVS_API HYP_ReturnStatus VSHYP_RTMOp(const uint32_t *block, uint32_t command);
QVS_API HYP_ReturnStatus VSHYP_RTMModOp(const uint32_t *block, uint32_t command);

/* Sends an operation on a port to the route-table module: two words of 32 bits and a flag byte, unchanged. */
QVS_API HYP_ReturnStatus VSHYP_RTMPortOp(uint32_t first, uint32_t second, uint8_t flag);

QVS_EXTERN_C_END

#endif
