/*
 * Traceflow: trace requests, the traceflow switch of a host, in-band network telemetry, port statistics.
 *
 * A switch is named by its alias: HYP_NOT_FOUND: no switch in the snapshot has it; HYP_BAD_PARAM: it is of
 * another class than "vswitch". Null arguments give HYP_BAD_PARAM, before the alias is resolved. A request
 * that fails gives the status of the errno of the device. What is handed out as a pointer is malloc'd and is
 * released with free; the records are the kernel's own. The three operations that say so print a line to
 * standard error when they fail.
 *
 *   TFHYP_SetTraceflowConfig("sw1", 1);
 *   TFHYP_CreateRequest("sw1", "port0", "02:00:00:00:00:01", "02:00:00:00:00:02", 0, 0, 0, 0, 0);
 */
#ifndef QVS_TFHYP_H
#define QVS_TFHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define TFHYP_PORT_STATS_SIZE 64u
#define TFHYP_INT_CONFIG_SIZE 6u

/*
 * Has the kernel trace a flow.
 *
 *   portName        47 characters of it are sent
 *   srcMac, dstMac  six groups of one or two hexadecimal digits with colons; what follows is ignored;
 *                   HYP_BAD_PARAM for anything else
 *   the five others are the kernel's and are passed on
 *
 * The alias is resolved before the addresses are looked at. Whether the port exists is the kernel's to judge.
 */
QVS_API HYP_ReturnStatus TFHYP_CreateRequest(const char *alias, const char *portName, const char *srcMac,
                                             const char *dstMac, uint32_t traceWord1, uint32_t traceWord2,
                                             uint16_t traceShort, uint64_t traceValue1, uint64_t traceValue2);

/* Switches traceflow of a switch on this host on (a host property of class CONFIG) or off (no property,
 * whether there was one or not). Otherwise the status of the state library. */
QVS_API HYP_ReturnStatus TFHYP_SetTraceflowConfig(const char *alias, uint8_t enable);

/* Removes the property, as is (HYP_NOT_FOUND from the state library is returned); where it cannot be read,
 * for whatever reason, has the kernel drop what it holds, and the status is that of the request. */
QVS_API HYP_ReturnStatus TFHYP_ClearTraceflowConfig(const char *alias);

/* The trace statistics of the port with this kernel number, 64 bytes, or null and a line on standard error.
 */
QVS_API void *TFHYP_GetPortStats(uint32_t portId);

/* Writes the telemetry configuration, 6 bytes; a failing request prints a line on standard error.
 * HYP_BAD_PARAM: null config. Otherwise the status of the request. */
QVS_API HYP_ReturnStatus TFHYP_SetINTConfig(const void *config);

/* Reads it: 6 bytes, or null; a failing request prints a line on standard error, memory that runs out does
 * not.
 */
QVS_API void *TFHYP_GetINTConfig(void);

QVS_EXTERN_C_END

#endif
