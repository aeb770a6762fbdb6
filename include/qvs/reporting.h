/*
 * Reporting entry points for code that is linked against the library and expects them of it.
 *
 * Their names are short and common, so <qvs/qvs.h> does not include this header: a program may have functions
 * of these names itself, and the library never calls either.
 */
#ifndef QVS_REPORTING_H
#define QVS_REPORTING_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* They look at none of their arguments, write nothing and return; Panic does, too. */
QVS_API void Log(const char *format, ...);
QVS_API void Warning(const char *format, ...);
QVS_API void Panic(const char *format, ...);

QVS_EXTERN_C_END

#endif
