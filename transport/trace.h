// The transport's diagnostic lines, in printf style. They are discarded unless the environment
// variable VORN_TRACE is set and not empty; then they go to standard error.
#pragma once

namespace vorn {

void trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace vorn
