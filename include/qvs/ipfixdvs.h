/* IPFIX flow sampling of a port. */
#ifndef QVS_IPFIXDVS_H
#define QVS_IPFIXDVS_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Releases a record that an IPFIXDVS getter handed out (never with free); null is passed on to the state
 * library. */
QVS_API void IPFIXDVS_FreeMemory(void *pointer);

QVS_EXTERN_C_END

#endif
