// Setting up and releasing a host's connection.
#pragma once

#include <vorn/library.h>

namespace vorn {

// Makes the shared block and the semaphores, lays out the two areas for the module type and brings
// the link up. False: error 17 with the system's reason; nothing is left, the link stays down.
bool SharedStuffCreate(VORN_Image& image, int32_t moduleType);

// Releases whatever there is of the connection. A module program whose link is down can't be told
// to end: it is ended.
void SharedStuffClose(VORN_Image& image);

}  // namespace vorn
