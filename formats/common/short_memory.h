// Module programs bring their own C++ runtime, whose failed allocations the library doesn't see.
#pragma once

#include <vorn/module.h>

#include <new>

namespace formats {

// From now on the host is told when memory that it has limited is used up.
inline void tellShortMemory() {
    std::set_new_handler([] {
        std::set_new_handler(nullptr);
        VORN_M_MemoryIsShort();
    });
}

}  // namespace formats
