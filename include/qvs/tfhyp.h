/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Traceflow: trace requests, the traceflow setting of a switch on this host, in-band network telemetry, and
 * port statistics.
 *
 * Functions that take an alias return HYP_NOT_FOUND when no switch in the snapshot has it, and HYP_BAD_PARAM
 * when the class of the switch is not "vswitch". A null argument gives HYP_BAD_PARAM before the alias is
 * resolved. When a request fails, the status is that of the errno of the device.
 *
 * The functions that return a pointer allocate the result with malloc; the caller releases it with free. The
 * kernel defines the layout of the records. Three functions print a line to standard error when they fail;
 * their comments say so.
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
 * Requests a trace of a flow from the kernel.
 *
 *   alias           alias of the switch, borrowed
 *   portName        port identifier, borrowed; at most 47 characters are sent; the kernel checks whether the
 *                   port exists
 *   srcMac, dstMac  MAC addresses as text, borrowed: six groups of one or two hexadecimal digits, separated
 *                   by colons; characters after the sixth group are ignored
 *   traceWord1 ...  five values that are passed on to the kernel
 *
 * HYP_BAD_PARAM also: srcMac or dstMac is not an address. The alias is resolved before the addresses are
 * checked.
 */
QVS_API HYP_ReturnStatus TFHYP_CreateRequest(const char *alias, const char *portName, const char *srcMac,
                                             const char *dstMac, uint32_t traceWord1, uint32_t traceWord2,
                                             uint16_t traceShort, uint64_t traceValue1, uint64_t traceValue2);

/* Enables or disables traceflow of a switch on this host. When enable is not 0, stores a host property of
 * class CONFIG. Otherwise clears the property, and returns HYP_OK when it is not stored. Any other status
 * comes from the state library. */
QVS_API HYP_ReturnStatus TFHYP_SetTraceflowConfig(const char *alias, uint8_t enable);

/* Clears the traceflow property and returns the status of the state library, including HYP_NOT_FOUND. If the
 * property cannot be read for any reason, the function instead asks the kernel to clear its traceflow
 * configuration, and returns the status of this request. */
QVS_API HYP_ReturnStatus TFHYP_ClearTraceflowConfig(const char *alias);

/* Returns the trace statistics of the port with this kernel port number, TFHYP_PORT_STATS_SIZE (64) bytes. On
 * failure, prints a line to standard error and returns null. */
QVS_API void *TFHYP_GetPortStats(uint32_t portId);

/* Sets the telemetry configuration to config, TFHYP_INT_CONFIG_SIZE (6) bytes, borrowed. If the request
 * fails, prints a line to standard error. HYP_BAD_PARAM: config is null. Otherwise the status of the request.
 */
QVS_API HYP_ReturnStatus TFHYP_SetINTConfig(const void *config);

/* Returns the telemetry configuration, 6 bytes, or null. If the request fails, prints a line to standard
 * error; if memory runs out, prints nothing. */
QVS_API void *TFHYP_GetINTConfig(void);

QVS_EXTERN_C_END

#endif
