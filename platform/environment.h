// The process environment. It is process-wide and not locked; publishing a value that is already
// there changes nothing.
#pragma once

namespace vorn::platform {

// The variable's value, or null when it is not set.
const char* environmentVariable(const char* name);

// Sets the variable. False when memory is short.
bool publishVariable(const char* name, const char* value);

}  // namespace vorn::platform
