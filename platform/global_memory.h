// Global memory: cleared blocks that lie at the same address in a program and in the module
// programs that it starts, always below 2 GiB, so that an address fits a signed 32-bit number.
// Nothing is left of a block when the programs that see it have ended, however they ended.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

// Makes a block. `descriptor` is what a module program must inherit to see it. The result is its
// address, or 0 on failure.
int32_t allocGlobal(size_t size, int32_t& descriptor);
void freeGlobal(int32_t address, size_t size, int32_t descriptor);

// In a module program: makes the inherited block of that address and of at least that size appear
// there.
bool lockGlobal(int32_t address, size_t size);
void unlockGlobal(int32_t address, size_t size);

inline void* globalPlace(int32_t address) {
    return reinterpret_cast<void*>(static_cast<uintptr_t>(address));
}

}  // namespace vorn::platform
