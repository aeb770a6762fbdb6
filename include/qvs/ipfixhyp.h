/*
 * IPFIX flow export: the kernel's statistics.
 *
 *   uint8_t stats[IPFIXHYP_STATS_SIZE];
 *   HYP_ReturnStatus status = IPFIXHYP_GetIpfixStats("sw1", stats);
 */
#ifndef QVS_IPFIXHYP_H
#define QVS_IPFIXHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define IPFIXHYP_STATS_SIZE 192u

/* The statistics of a switch, or of one of its ports: 192 bytes, the kernel's own, into the caller's buffer.
 * HYP_BAD_PARAM: null argument; HYP_NOT_FOUND: no such switch; for a port, HYP_BAD_PARAM also for a switch of
 * another class than "vswitch". Otherwise the status of the request's errno. */
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixStats(const char *alias, void *stats);
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixGranularStats(const char *alias, const char *portId, void *stats);

QVS_EXTERN_C_END

#endif
