/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Reporting functions for programs that expect to find them in the library.
 *
 * Their names are short and common. <qvs/qvs.h> therefore does not include this header, so that a program may
 * define functions of these names itself. The library calls neither its own functions nor those of a program.
 */
#ifndef QVS_REPORTING_H
#define QVS_REPORTING_H

#include <qvs/hyp.h>

QVS_EXTERN_C_BEGIN

/* Do nothing and return. They read none of their arguments and write nothing. Panic returns, too. */
QVS_API void Log(const char *format, ...);
QVS_API void Warning(const char *format, ...);
QVS_API void Panic(const char *format, ...);

QVS_EXTERN_C_END

#endif
