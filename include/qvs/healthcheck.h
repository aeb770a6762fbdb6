/* Health checks of a switch's teaming, VLANs and MTU. */
#ifndef QVS_HEALTHCHECK_H
#define QVS_HEALTHCHECK_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Releases a result that a HealthCheck getter handed out (never with free); null is passed on to the state
 * library. */
QVS_API void HealthCheck_FreeMemory(void *pointer);

QVS_EXTERN_C_END

#endif
