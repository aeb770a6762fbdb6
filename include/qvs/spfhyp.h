/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Service ports of the SPF data path.
 *
 * The functions that return a pointer allocate the result with malloc; the caller releases it with free. The
 * kernel defines the layout of the records. On failure these functions return null. errno is then ENOMEM when
 * memory ran out, and otherwise the HYP_ReturnStatus of the step that failed, which is not an errno number.
 *
 *   void *ports = SPFHYP_GetPortsList("sw1");
 *   if (ports == NULL) puts(ReturnStatusToString((HYP_ReturnStatus)errno));
 *   free(ports);
 */
#ifndef QVS_SPFHYP_H
#define QVS_SPFHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define SPFHYP_PORT_ENTRY_SIZE 8u
#define SPFHYP_GVM_STATS_SIZE 256u
#define SPFHYP_SVM_STATS_SIZE 104u
#define SPFHYP_SPF_STATS_SIZE 80u
#define SPFHYP_CONFIG_FAILURE_STATS_SIZE 8u

/*
 * Returns the list of plumbed ports of a switch: an 8-byte header that starts with a 32-bit count, and that
 * many entries of 8 bytes.
 *
 *   alias  alias of a switch of any class, borrowed
 *
 * errno on failure: HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM: alias is null.
 * ENOMEM: memory runs out, or the size of the list exceeds 32 bits. Otherwise the status of the request.
 */
QVS_API void *SPFHYP_GetPortsList(const char *alias);

/* Returns the statistics of the guest port with this kernel port number, SPFHYP_GVM_STATS_SIZE (256) bytes.
 * errno on failure: ENOMEM, or the status of the request. */
QVS_API void *SPFHYP_GetGVMPortStats(uint32_t port);

/* Returns the statistics of the service port with this kernel port number, SPFHYP_SVM_STATS_SIZE (104) bytes.
 * errno on failure: ENOMEM, or the status of the request. */
QVS_API void *SPFHYP_GetSVMPortStats(uint32_t port);

/* Returns the statistics of a switch of any class, SPFHYP_SPF_STATS_SIZE (80) bytes. errno on failure:
 * HYP_NOT_FOUND: no switch in the snapshot has the alias. HYP_BAD_PARAM: alias is null. Otherwise ENOMEM, or
 * the status of the request. */
QVS_API void *SPFHYP_GetSPFPortStats(const char *alias);

/*
 * Plumb a port into the data path (SPFHYP_PlumbSpfPort), and remove it from there (SPFHYP_UnPlumbSpfPort).
 *
 *   switchName  kernel name of the switch, borrowed; at most 63 characters are sent; not looked up
 *   portId      port identifier, borrowed; at most 47 characters are sent; not looked up
 *   unused      ignored, may be null
 *   mac         MAC address as text, borrowed; at most 17 characters are sent
 *
 * HYP_BAD_PARAM: an argument other than unused is null. Any other status is that of the errno of the device.
 */
QVS_API HYP_ReturnStatus SPFHYP_PlumbSpfPort(const char *switchName, const char *portId, const void *unused,
                                             const char *mac);
QVS_API HYP_ReturnStatus SPFHYP_UnPlumbSpfPort(const char *switchName, const char *portId);

/* Returns the numbers of failed configurations, SPFHYP_CONFIG_FAILURE_STATS_SIZE (8) bytes. errno on failure:
 * ENOMEM, or the status of the request. */
QVS_API void *SPFHYP_GetConfigFailureStats(void);

QVS_EXTERN_C_END

#endif
