#include "platform/environment.h"

#include <cstdlib>
#include <cstring>

namespace vorn::platform {

const char* environmentVariable(const char* name) { return std::getenv(name); }

bool publishVariable(const char* name, const char* value) {
    const char* present = std::getenv(name);
    if (present && std::strcmp(present, value) == 0) return true;
    return ::setenv(name, value, 1) == 0;
}

}  // namespace vorn::platform
