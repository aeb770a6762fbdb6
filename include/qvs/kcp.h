/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The kernel control plane: its switches, interfaces, NICs and containers.
 *
 * The functions of this family return no status. They return null when there is no device, when the request
 * fails, when memory runs out, when the size of a list exceeds 32 bits, or when a list is empty. Any other
 * pointer is allocated with malloc; the caller releases it with free.
 *
 * A list is a 32-bit count followed by that many packed entries. The count is that of the kernel, which also
 * defines the layout of the entries.
 *
 *   void *nics = KCP_GetHYPNICList();
 *   free(nics);
 */
#ifndef QVS_KCP_H
#define QVS_KCP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define KCP_DVS_SIZE 128u
#define KCP_VIF_SIZE 11441u
#define KCP_CIF_SIZE 11689u
#define KCP_HYPNIC_SIZE 1108u
#define KCP_UPLINK_SIZE 1237u
#define KCP_PSPROP_SIZE 256u
#define KCP_CONTAINER_SIZE 10u
#define KCP_STATUS_SIZE 3u

/* Returns the list of switches, entries of 128 bytes. */
QVS_API void *KCP_GetDVSList(void);
/* Returns the list of virtual interfaces, entries of 11441 bytes. */
QVS_API void *KCP_GetVIFList(void);
/* Returns the list of container interfaces, entries of 11689 bytes. */
QVS_API void *KCP_GetCIFList(void);
/* Returns the list of virtual interfaces of the hypervisor, entries of 11441 bytes. */
QVS_API void *KCP_GetHYPVIFList(void);
/* Returns the list of NICs of the hypervisor, entries of 1108 bytes. */
QVS_API void *KCP_GetHYPNICList(void);
/* Returns the list of uplinks, entries of 1237 bytes. */
QVS_API void *KCP_GetUplinkList(void);
/* Returns the list of portset properties, entries of 256 bytes. */
QVS_API void *KCP_GetPSPropList(void);
/* Returns the list of containers, entries of 10 bytes. A second 32-bit word follows the count, so that the
 * entries start at byte 8. */
QVS_API void *KCP_GetContainerList(void);

/* Returns the status block, KCP_STATUS_SIZE (3) bytes. */
QVS_API void *KCP_GetStatus(void);

/* Do nothing and return 0. */
QVS_API int32_t KCP_CharDevInit(void);
QVS_API int32_t KCP_CharDevCleanup(void);

QVS_EXTERN_C_END

#endif
