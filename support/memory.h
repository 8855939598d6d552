// Ownership of AllocMemory blocks, and the hook that lets tests run out of memory.
#pragma once

#include <vorn/support.h>

#include <memory>

namespace vorn {

struct MemoryDeleter {
    void operator()(void* block) const { FreeMemory(block); }
};

// A block of AllocMemory that is released with FreeMemory.
template <class T>
using Owned = std::unique_ptr<T, MemoryDeleter>;

// A cleared block for `count` plain Ts, or null.
template <class T>
Owned<T> allocCleared(size_t count = 1) {
    return Owned<T>(static_cast<T*>(AllocMemory(count * sizeof(T), MEMORY_Clear)));
}

// Tests: the n-th allocation of this thread from now on (1 is the next) and, when `andAllAfter`,
// every later one fails. 0 switches the injection off. The result counts the allocations since the
// last call.
unsigned failAllocation(unsigned n, bool andAllAfter = false);

}  // namespace vorn
