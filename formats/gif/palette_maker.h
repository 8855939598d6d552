// Finds a palette for a picture that has none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gif {

struct IndexedPicture {
    std::vector<uint8_t> rgb;      // red, green, blue of each entry
    std::vector<uint8_t> indices;  // of each pixel
    int transparent = -1;          // the entry of pixels that are see-through; -1: none are
};

// `channels` is 1, 2 (grey), 3 or 4; the second and the fourth are alpha, which is seen as all or
// nothing. Pictures of at most 256 colours keep them all, others get the 256 that fit best.
IndexedPicture indexedPicture(const std::vector<uint8_t>& samples,
                              size_t channels,
                              size_t width,
                              size_t height);

}  // namespace gif
