/*
 * The kernel control plane: its switches, interfaces, NICs and containers.
 *
 * This family answers no statuses. A null pointer means any failure (no device, a request that failed, no
 * memory, a list longer than 32 bits can say), and for a list also that it is empty; what is not null is
 * malloc'd and is released with free. A list is a 32-bit count and that many entries of the size given,
 * packed; the entries are the kernel's own. The count in it is the kernel's, too.
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

/* Switches, 128 bytes each. */
QVS_API void *KCP_GetDVSList(void);
/* Virtual interfaces, 11441 bytes each. */
QVS_API void *KCP_GetVIFList(void);
/* Container interfaces, 11689 bytes each. */
QVS_API void *KCP_GetCIFList(void);
/* Hypervisor virtual interfaces, 11441 bytes each. */
QVS_API void *KCP_GetHYPVIFList(void);
/* Hypervisor NICs, 1108 bytes each. */
QVS_API void *KCP_GetHYPNICList(void);
/* Uplinks, 1237 bytes each. */
QVS_API void *KCP_GetUplinkList(void);
/* Portset properties, 256 bytes each. */
QVS_API void *KCP_GetPSPropList(void);
/* Containers, 10 bytes each; behind the count stands a second 32-bit word, so they start at byte 8. */
QVS_API void *KCP_GetContainerList(void);

/* The status block, 3 bytes. */
QVS_API void *KCP_GetStatus(void);

/* Both do nothing and answer 0. */
QVS_API int32_t KCP_CharDevInit(void);
QVS_API int32_t KCP_CharDevCleanup(void);

QVS_EXTERN_C_END

#endif
