// Some files give their last line only at their end, and some libraries only whole pictures: the
// module then holds the picture. A small file can claim a huge one, and this is where that ends.
#pragma once

#include <cstddef>
#include <cstdint>

#include "formats/common/failure.h"

namespace formats {

inline constexpr size_t kMostHeldBytes = size_t{1} << 30;

// The bytes of a block of lines that is to be held. Throws kOutOfMemory beyond the limit.
inline size_t heldBytes(int64_t lines, int64_t lineBytes) {
    if (lines < 0 || lineBytes < 0 ||
        (lines > 0 && lineBytes > static_cast<int64_t>(kMostHeldBytes) / lines))
        throw Failure{kOutOfMemory};
    return static_cast<size_t>(lines * lineBytes);
}

}  // namespace formats
