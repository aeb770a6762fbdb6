/*
 * The running state of the switches, straight from the kernel's device /dev/vswitch.
 *
 * Names are the kernel's own and are cut, never refused, when they do not fit the request: a switch name (its
 * portset name) at 127 characters, an uplink name at 31. A device or a request that fails gives the status of
 * its errno. What comes back through a pointer is malloc'd and is released with VSHYP_FreeMemory; the records
 * in it are the kernel's own and are passed on as they are. Safe from any thread.
 *
 * A counted list is a VSHYP_ListHeader followed by count entries, back to back; a list without entries is a
 * header that says so, never null. Its pointer is untouched when the first request fails and null after every
 * later failure (HYP_NO_MEMORY among them). The count is the kernel's own.
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

/* The uplinks of a switch, 36 bytes each. HYP_BAD_PARAM: null argument. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinks(const char *switchName, void **uplinks);

/* Whether an uplink's link, or its LACP link, is up: 1 or 0; untouched on failure. HYP_BAD_PARAM: null
 * argument. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLinkState(const char *switchName, const char *uplinkName,
                                                  uint32_t *up);
QVS_API HYP_ReturnStatus VSHYP_GetUplinkLACPLinkState(const char *switchName, const char *uplinkName,
                                                      uint32_t *up);

/* The link aggregation table, 35588 bytes; the pointer is untouched by any failure. HYP_BAD_PARAM: null
 * argument. */
QVS_API HYP_ReturnStatus VSHYP_GetLAGTable(const char *switchName, void **lagTable);

/* The information block of a switch, 220 bytes: by alias into a new buffer, by kernel name into the caller's,
 * which is cleared first. HYP_BAD_PARAM: null argument. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchInfo(const char *alias, void **info);
QVS_API HYP_ReturnStatus VSHYP_GetVSInfo(const char *switchName, void *info);

/* The ports of a switch, a counted list of 1458-byte blocks, and the block of one port. HYP_BAD_PARAM: null
 * argument. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitchPortInfo(const char *alias, void **ports);
QVS_API HYP_ReturnStatus VSHYP_GetPortInfo(const char *alias, const char *dvPortId, void **info);

/* The uplink that teaming would choose for the port with this kernel number: 32 bytes into the caller's
 * buffer, which is cleared first. HYP_BAD_PARAM: null buffer. */
QVS_API HYP_ReturnStatus VSHYP_PortGetTeamUplinkHint(uint32_t portId, void *hint);

/* The port identifier behind an uplink: 48 bytes into the caller's buffer, which is cleared first and begins
 * with NUL after a failure. HYP_BAD_PARAM: null argument. */
QVS_API HYP_ReturnStatus VSHYP_GetUplinkDVPortID(const char *uplinkName, void *identity);

/* The switches of the host, a counted list: kernel names of 128 bytes for selector VSHYP_SELECT_SWITCH_NAMES,
 * aliases of 81 bytes for any other. The pointer is null first and after every failure. HYP_FAILURE: the
 * kernel did not answer. */
QVS_API HYP_ReturnStatus VSHYP_GetSwitches(uint32_t selector, void **switches);

/* The identifier the kernel has for an alias (80 characters of it are sent): a SwitchIdString of the caller,
 * cleared first. The snapshot is not asked. HYP_BAD_PARAM: null argument. */
QVS_API HYP_ReturnStatus VSHYP_DVSAliasToSwitchId(const char *alias, void *switchId);

/* Takes an uplink administratively up (state non-zero) or down. HYP_BAD_PARAM: null name. */
QVS_API HYP_ReturnStatus VSHYP_SetUplinkAdminLinkState(const char *switchName, const char *uplinkName,
                                                       int32_t state);

/* Has the kernel place the devices of a switch on NUMA nodes anew. HYP_BAD_PARAM: null name. */
QVS_API HYP_ReturnStatus VSHYP_RefreshDevNUMAInfo(const char *switchName);

/* The multicast filter mode that the running switch has, as the kernel numbers it; untouched on failure.
 * HYP_BAD_PARAM: null argument. */
QVS_API HYP_ReturnStatus VSHYP_GetMcastFilterMode(const char *switchName, uint32_t *mode);

QVS_EXTERN_C_END

#endif
