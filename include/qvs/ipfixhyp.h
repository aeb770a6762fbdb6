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

/* The statistics of a switch, or of one of its ports: 192 bytes, the kernel's own, into the caller's buffer,
 * which a failure leaves as it was. HYP_BAD_PARAM: null argument; for a port, also a switch of another class
 * than "vswitch". HYP_NOT_FOUND: no switch in the snapshot has the alias; the port goes to the kernel unseen,
 * 47 characters of it. Otherwise the status of the errno of the device. */
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixStats(const char *alias, void *stats);
QVS_API HYP_ReturnStatus IPFIXHYP_GetIpfixGranularStats(const char *alias, const char *portId, void *stats);

QVS_EXTERN_C_END

#endif
