// The module's side of a connection.
#pragma once

#include "transport/shared_stuff.h"

namespace vorn {

// Opens the host's objects from the module's command line; the record's semaphore roles are set
// before. False when the command line or an object is wrong, or the host is gone: nothing is left
// open then.
bool SharedStuffAttach(SharedStuff& stuff, int argc, char** argv);

void SharedStuffDetach(SharedStuff& stuff);

}  // namespace vorn
