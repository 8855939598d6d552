// The module program that serves a handle.
#pragma once

#include <vorn/types.h>

namespace vorn {

// Starts the program (found also without the ".exe" that the protocol appends) with the command
// line that names the connection's objects. False: error 17, or 19 with the system's number; the
// link is down.
bool ModuleLaunch(VORN_Image& image, const char* moduleFileName);

// Whether the handle still holds a module program, see VORN_L_ShutDownHandle. Doesn't ask the
// operating system.
bool ModuleIsRunning(const VORN_Image& image);

// The error for a wait that has failed: 3, or the limit that the module program says it has met
// before it ended.
int32_t reasonOfEnd(VORN_Image& image);

// Whether the running module program has told that it met the limit of these posts.
bool limitIsMet(VORN_Image& image, int32_t posts);

}  // namespace vorn
