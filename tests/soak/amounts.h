// How much a soak test does: all, but only a part of it under a sanitizer, unless VORN_SOAK_FULL is
// set.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <string>

// Present under the sanitizers only, whose allocators keep their own books (and mappings).
extern "C" size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

inline bool isSanitized() { return __sanitizer_get_current_allocated_bytes != nullptr; }

inline int amount(int full, int part) {
    return isSanitized() && std::getenv("VORN_SOAK_FULL") == nullptr ? part : full;
}

// Pictures of test_loader's that come in several blocks.
inline std::string soakPicture(int number) {
    return "w=40,h=30,block=4,seed=" + std::to_string(number);
}
