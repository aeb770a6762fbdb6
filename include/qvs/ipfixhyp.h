/* SPDX-License-Identifier: Apache-2.0 */
/*
 * IPFIX flow export: the statistics of the kernel.
 *
 *   uint8_t stats[IPFIXHYP_STATS_SIZE];
 *   HYP_ReturnStatus status = IPFIXHYP_GetIpfixStats("sw1", stats);
 */
#ifndef QVS_IPFIXHYP_H
#define QVS_IPFIXHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define IPFIXHYP_STATS_SIZE 192u

/*
 * Read the IPFIX statistics of a switch, or of one of its ports.
 *
 *   alias   alias of the switch, borrowed; for a port, the switch must have class "vswitch"
 *   portId  port identifier, borrowed; at most 47 characters are sent, and the port is not looked up
 *   stats   receives IPFIXHYP_STATS_SIZE (192) bytes, whose layout the kernel defines; owned by the caller,
 *           unchanged on failure
 *
 * HYP_BAD_PARAM: an argument is null or, for a port, the switch has another class. HYP_NOT_FOUND: no switch
 * in the snapshot has the alias. Any other status is that of the errno of the device.
 */
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixStats(const char *alias, void *stats);
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixGranularStats(const char *alias, const char *portId, void *stats);

QVS_EXTERN_C_END

#endif
