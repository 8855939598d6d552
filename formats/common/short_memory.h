// Module programs bring their own C++ runtime, whose failed allocations the library doesn't see.
#pragma once

#include <vorn/module.h>

#include <atomic>
#include <new>

namespace formats {

// Whether an allocation has failed since this was last set to false: there are libraries that take
// that for a fault of the file.
inline std::atomic<bool> memoryWasShort{false};

// From now on the host is told when memory that it has limited is used up.
inline void tellShortMemory() {
    std::set_new_handler([] {
        memoryWasShort = true;
        VORN_M_MemoryIsShort();
        throw std::bad_alloc();
    });
}

}  // namespace formats
