// SPDX-License-Identifier: Apache-2.0
// The reporting functions, which do nothing.
#include "qvs/reporting.h"

// Deliberately empty: programs that are linked against the library call them, and the library prints nothing.
extern "C" void Log(const char * /*format*/, ...) {}
extern "C" void Warning(const char * /*format*/, ...) {}
extern "C" void Panic(const char * /*format*/, ...) {}
