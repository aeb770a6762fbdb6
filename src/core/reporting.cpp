// The silent reporting entry points.
#include "qvs/reporting.h"

// Empty on purpose: programs linked against the library call them, and the library prints nothing.
extern "C" void Log(const char * /*format*/, ...) {}
extern "C" void Warning(const char * /*format*/, ...) {}
extern "C" void Panic(const char * /*format*/, ...) {}
