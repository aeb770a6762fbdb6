/*
 * Live trace: sessions on a switch, counters by action, what was seen on a port.
 *
 * A null pointer means any failure (of the device, the request or memory), silently; what is not null is
 * malloc'd and is released with free. The records are the kernel's own.
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
 * Creates a session.
 *
 *   alias        a switch of class "vswitch"
 *   portName     47 characters of it are sent
 *   sessionData  length bytes of definition, passed on to the kernel
 *
 * HYP_BAD_PARAM: null argument, or a switch of another class. HYP_NOT_FOUND: no switch in the snapshot has
 * the alias. HYP_NO_MEMORY: no memory for the request, or one longer than 32 bits can say. Otherwise the
 * status of the errno of the device; whether the port exists is the kernel's to judge.
 */
QVS_API HYP_ReturnStatus LIVETRACEHYP_CreateSession(const char *alias, const char *portName,
                                                    const void *sessionData, uint32_t length);

/* The list of sessions, 705 bytes. */
QVS_API void *LIVETRACEHYP_ListSession(void);

/* The counters of an action: an 8-byte header with a 32-bit count in front, and that many entries of 26
 * bytes. An empty list is a header. */
QVS_API void *LIVETRACEHYP_GetCountActionData(uint8_t action);

/* What was seen on the port with this kernel number, 21 bytes. */
QVS_API void *LIVETRACEHYP_GetPortData(uint32_t portId);

/* The statistics, 96 bytes. */
QVS_API void *LIVETRACEHYP_GetStats(void);

QVS_EXTERN_C_END

#endif
