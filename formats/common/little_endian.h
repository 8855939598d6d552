// Numbers in files whose least significant byte comes first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace formats {

inline uint32_t littleEndian(const uint8_t* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = count; i-- > 0;) value = value << 8 | bytes[i];
    return value;
}

inline void putLittleEndian(std::vector<uint8_t>& bytes, uint32_t value, size_t count) {
    for (; count > 0; --count, value >>= 8) bytes.push_back(static_cast<uint8_t>(value));
}

}  // namespace formats
