/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The state of the switches as text.
 *
 *   char *text = NULL;
 *   if (NetDVS_Dump(NULL, &text) == HYP_OK) fputs(text, stdout);
 *   NetDVS_FreeMemory(text);
 */
#ifndef QVS_NETDVS_H
#define QVS_NETDVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/*
 * Returns the snapshot as text: each switch with its global and host properties, and its ports with theirs.
 *
 *   alias  alias of the switch to print, which must have class "vswitch"; null prints all switches; borrowed
 *   text   receives the NUL-terminated text, which can be empty; the caller releases it with
 *          NetDVS_FreeMemory; unchanged on failure
 *
 * HYP_NO_MEMORY: the first buffer cannot be allocated. HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM:
 * the switch has another class, or text is null. For an empty snapshot, for example without a host, the
 * function returns HYP_OK and an empty text. If memory runs out later, the text lacks the piece that was
 * being written and contains the rest.
 */
QVS_API HYP_ReturnStatus NetDVS_Dump(const char *alias, char **text);

/* Releases a text that NetDVS_Dump returned. Null is allowed. */
QVS_API void NetDVS_FreeMemory(void *text);

QVS_EXTERN_C_END

#endif
