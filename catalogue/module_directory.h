// The directories that hold the modules.
#pragma once

#include <vorn/types.h>

#include "platform/path.h"

namespace vorn {

// The loaders' (1) or savers' (2) directory below the home directory, as it is really written
// there. Null for another type. The string is the calling thread's, made on first need and then
// kept.
const char* moduleDirectory(int32_t type);

// The dynamic library that a module has beside itself: "%s.dll" of its name. False when there is
// none.
bool findModuleLibrary(const char* name, int32_t type, char (&path)[platform::kMaxPath]);

}  // namespace vorn
