// System calls that fail as if the system had no more to give.
#pragma once

#include <string>

// From now on the call ("memfd_create", "ftruncate" or "mmap") fails with the error number; "" ends
// this.
void refuse(const std::string& call, int error);
