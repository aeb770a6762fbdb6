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
 * Renders the snapshot: each switch with its global and host properties and its ports with theirs.
 *
 *   alias  the one switch to print, which must be of class "vswitch"; null prints all
 *   text   receives the NUL-terminated text, possibly empty; released with NetDVS_FreeMemory; untouched on
 *          failure
 *
 * HYP_NO_MEMORY: no first buffer. HYP_NOT_FOUND: no switch has the alias. HYP_BAD_PARAM: the switch is of
 * another class, or null text. An empty snapshot, as without a host, is a success and an empty text. Memory
 * that runs out later drops the piece being written and keeps the rest.
 */
QVS_API HYP_ReturnStatus NetDVS_Dump(const char *alias, char **text);

/* Releases a text of NetDVS_Dump; null is fine. */
QVS_API void NetDVS_FreeMemory(void *text);

QVS_EXTERN_C_END

#endif
