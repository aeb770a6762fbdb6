/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Bidirectional Forwarding Detection: sessions, statistics and log level of the kernel module.
 *
 * The functions of this family return no status. A null pointer means a failure of any kind, and nothing is
 * printed. Any other pointer is allocated with malloc; the caller releases it with free. The kernel defines
 * the layout of the records.
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

/*
 * Returns the whole session table, BFD_SESSIONS_SIZE (1139336) bytes. The caller releases it with free.
 *
 *   flags  at least one of the two low bits must be set; all 8 bits are sent to the kernel
 *
 * Returns null when neither of the two low bits is set (the kernel is not asked), when memory runs out, or
 * when the request fails.
 */
QVS_API void *BFD_GetSessions(uint8_t flags);

/* Returns the log level of the module, or BFD_NO_LOG_LEVEL when memory runs out or the request fails. */
QVS_API uint32_t BFD_GetLogLevel(void);

/*
 * Sets the log level of the module.
 *
 *   level  0, 1, 3 or 5
 *
 * Returns the result of the device request: 0 or a positive number when the kernel accepted the level, -1
 * when the request failed, with the reason in errno. For any other level, the function does not ask the
 * kernel. It prints the line "Not a valid log level." to standard output and returns -1.
 */
QVS_API int32_t BFD_SetLogLevel(uint32_t level);

/* Returns the statistics, BFD_STATS_SIZE (64) bytes. The caller releases them with free. Returns null when
 * memory runs out or the request fails. */
QVS_API void *BFD_GetStats(void);

QVS_EXTERN_C_END

#endif
