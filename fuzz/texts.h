// What the targets for text files share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

// A violated expectation ends the target, as a sanitizer's find does.
inline void expect(bool holds) {
    if (!holds) std::abort();
}

// The input as a text: exactly as long as it says, so that a reader who goes too far is seen.
inline std::string textOf(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
