/*
 * Service ports of the SPF data path.
 *
 * What is handed out as a pointer is malloc'd and is released with free; the records are the kernel's own.
 * Null means a failure, and errno then holds ENOMEM when memory ran out, else the HYP_ReturnStatus of the
 * step that failed - a status, not an errno number.
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

/* The plumbed ports of a switch of any class: an 8-byte head with a 32-bit count in front, and that many
 * entries of 8 bytes. errno: HYP_NOT_FOUND: no switch in the snapshot has the alias; HYP_BAD_PARAM: null
 * alias; ENOMEM, also for a list longer than 32 bits can say; else the status of the request. */
QVS_API void *SPFHYP_GetPortsList(const char *alias);

/* Statistics of a guest port (256 bytes), of a service port (104), of a switch (80). errno: ENOMEM, or the
 * status of the request; for a switch also HYP_NOT_FOUND and HYP_BAD_PARAM as above. */
QVS_API void *SPFHYP_GetGVMPortStats(uint32_t port);
QVS_API void *SPFHYP_GetSVMPortStats(uint32_t port);
QVS_API void *SPFHYP_GetSPFPortStats(const char *alias);

/*
 * Plumbs a port into the data path, and takes it out again.
 *
 *   switchName  kernel name of the switch, 63 characters of it are sent
 *   portId      port identifier, 47 characters of it are sent
 *   unused      ignored, may be null
 *   mac         MAC address as text, 17 characters of it are sent
 *
 * HYP_BAD_PARAM: null argument but the unused one. Otherwise the status of the errno of the device; neither
 * the switch nor the port is looked up.
 */
QVS_API HYP_ReturnStatus SPFHYP_PlumbSpfPort(const char *switchName, const char *portId, const void *unused,
                                             const char *mac);
QVS_API HYP_ReturnStatus SPFHYP_UnPlumbSpfPort(const char *switchName, const char *portId);

/* How often a configuration failed, 8 bytes. errno: ENOMEM, or the status of the request. */
QVS_API void *SPFHYP_GetConfigFailureStats(void);

QVS_EXTERN_C_END

#endif
