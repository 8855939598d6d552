// Temporary files that are used like memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

// The directory for temporary files that may be large (not one that the system keeps in memory).
const char* scratchFolder();

// Maps a new file of `size` zero bytes, for which the disk has room. The file has no name. The
// result is the system's error number, 0 for none.
int32_t mapScratch(size_t size, void*& bytes);
void unmapScratch(void* bytes, size_t size);

}  // namespace vorn::platform
