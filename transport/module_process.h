// Whether a handle still holds a module program, see VORN_L_ShutDownHandle. Doesn't ask the
// operating system.
#pragma once

#include <vorn/types.h>

namespace vorn {

bool ModuleIsRunning(const VORN_Image& image);

}  // namespace vorn
