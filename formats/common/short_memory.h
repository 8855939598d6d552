// Module programs bring their own C++ runtime, whose failed allocations the library doesn't see.
#pragma once

#include <vorn/module.h>

#include <atomic>
#include <new>
#include <string_view>

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

// Libraries in C only say in their messages that an allocation has failed.
inline void noteMessage(std::string_view text) {
    for (const std::string_view words : {"memory", "allocate", "No space for", "system limits"}) {
        if (text.find(words) != std::string_view::npos) memoryWasShort = true;
    }
}

}  // namespace formats
