#include "transport/trace.h"

#include <vorn/support.h>

#include <cstdarg>
#include <cstdio>

#include "platform/environment.h"

namespace vorn {

void trace(const char* format, ...) {
    const char* wanted = platform::environmentVariable("VORN_TRACE");
    if (!wanted || !*wanted) return;
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    dbprint("%s", line);
}

}  // namespace vorn
