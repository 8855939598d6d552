#include <vorn/support.h>

#include <cstdarg>
#include <cstdio>

#include "platform/environment.h"

extern "C" {

void dbprint(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

void dblog(const char* format, ...) {
    const char* wanted = vorn::platform::environmentVariable("VORN_LOG");
    if (!wanted || !*wanted) return;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

}  // extern "C"
