/*
 * Bidirectional Forwarding Detection: sessions, statistics and log level of the kernel's module.
 *
 * This family answers no statuses. A null pointer means any failure, silently; what is not null is malloc'd
 * and is released with free. The records are the kernel's own.
 *
 *   void *sessions = BFD_GetSessions(3);
 *   free(sessions);
 */
#ifndef QVS_BFD_H
#define QVS_BFD_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

#define BFD_SESSIONS_SIZE 1139336u
#define BFD_STATS_SIZE 64u
#define BFD_NO_LOG_LEVEL 0xffffffffu

/* The whole session table, 1139336 bytes. At least one of the two low bits of flags must be set; all 8 are
 * sent. Null also: neither of them is set, and the kernel is not asked; no memory; the request failed. */
QVS_API void *BFD_GetSessions(uint8_t flags);

/* The log level of the module; BFD_NO_LOG_LEVEL after a failure, whether of memory or of the request. */
QVS_API uint32_t BFD_GetLogLevel(void);

/* Sets the log level: 0, 1, 3 or 5. The result is the device's own: 0 or more (a positive one is passed on)
 * when the kernel took it, -1 when not, with the reason in errno. Any other level is refused with -1 and the
 * line "Not a valid log level." on standard output; the kernel is not asked. */
QVS_API int32_t BFD_SetLogLevel(uint32_t level);

/* The statistics, 64 bytes. Null: no memory, or the request failed. */
QVS_API void *BFD_GetStats(void);

QVS_EXTERN_C_END

#endif
