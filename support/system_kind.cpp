// Which system the library believes it runs on: the one place that decides. The environment
// variable lets host and module agree, as a module program inherits it.
#include <vorn/support.h>

#include <cstring>

#include "platform/environment.h"

namespace {

bool systemIs(const char* name) {
    const char* system = vorn::platform::environmentVariable("VORN_SYSTEM");
    return system && std::strcmp(system, name) == 0;
}

}  // namespace

extern "C" {

VORN_Bool OSEqualWin162(void) { return systemIs("win16"); }

VORN_Bool OSEqualChicago2(void) { return systemIs("chicago"); }

VORN_Bool OSEqualNT2(void) { return !OSEqualWin162() && !OSEqualChicago2(); }

}  // extern "C"
