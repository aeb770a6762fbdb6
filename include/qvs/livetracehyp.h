/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Live trace: sessions on a switch, counters by action, and the data of a port.
 *
 * The functions that return a pointer return null when the device or the request fails or when memory runs
 * out; nothing is printed. Any other pointer is allocated with malloc; the caller releases it with free. The
 * kernel defines the layout of the records.
 *
 *   void *sessions = LIVETRACEHYP_ListSession();
 *   free(sessions);
 */
#ifndef QVS_LIVETRACEHYP_H
#define QVS_LIVETRACEHYP_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define LIVETRACEHYP_SESSION_LIST_SIZE 705u
#define LIVETRACEHYP_ACTION_COUNT_SIZE 26u
#define LIVETRACEHYP_PORT_DATA_SIZE 21u
#define LIVETRACEHYP_STATS_SIZE 96u

/*
 * Creates a live-trace session on a port.
 *
 *   alias        alias of a switch of class "vswitch", borrowed
 *   portName     port identifier, borrowed; at most 47 characters are sent; the kernel checks whether the
 *                port exists
 *   sessionData  definition of the session, borrowed; passed on to the kernel
 *   length       length of sessionData in bytes, 32 bits
 *
 * HYP_BAD_PARAM: an argument is null, or the switch has another class. HYP_NOT_FOUND: no switch in the
 * snapshot has the alias. HYP_NO_MEMORY: memory runs out, or the size of the request exceeds 32 bits. Any
 * other status is that of the errno of the device.
 */
QVS_API HYP_ReturnStatus LIVETRACEHYP_CreateSession(const char *alias, const char *portName,
                                                    const void *sessionData, uint32_t length);

/* Returns the list of sessions, LIVETRACEHYP_SESSION_LIST_SIZE (705) bytes, or null. */
QVS_API void *LIVETRACEHYP_ListSession(void);

/* Returns the counters of an action, or null: an 8-byte header that starts with a 32-bit count, and that many
 * entries of 26 bytes. An empty list consists of the header alone. */
QVS_API void *LIVETRACEHYP_GetCountActionData(uint8_t action);

/* Returns the data of the port with this kernel port number, 21 bytes, or null. */
QVS_API void *LIVETRACEHYP_GetPortData(uint32_t portId);

/* Returns the statistics, LIVETRACEHYP_STATS_SIZE (96) bytes, or null. */
QVS_API void *LIVETRACEHYP_GetStats(void);

QVS_EXTERN_C_END

#endif
