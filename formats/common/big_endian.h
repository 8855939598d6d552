// Numbers in files whose most significant byte comes first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace formats {

inline uint32_t bigEndian(const uint8_t* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

inline void putBigEndian(std::vector<uint8_t>& bytes, uint32_t value, size_t count) {
    for (; count > 0; --count) bytes.push_back(static_cast<uint8_t>(value >> 8 * (count - 1)));
}

}  // namespace formats
