// The modules that are installed.
#pragma once

#include <cstdint>

namespace vorn {

// The number of modules of a type, counted once a thread. 0: errors 51, 52.
int32_t countModules(int32_t type);

// Their names, sorted, for VORN_H_FreeStringList. Null: errors 51, 52, 17.
char** listModules(int32_t type);

}  // namespace vorn
