// Plain reference: whole images, straight from the definition.
#pragma once

#include "tests/scale/test_image.h"

namespace vorn_test {

inline int32_t nearestItem(int64_t i, int64_t n, int64_t m) {
    return static_cast<int32_t>(n > m ? (i * n + m - 1) / m : i * n / m);
}

inline Image referenceNearest(const Image& image, int32_t width, int32_t lines) {
    Image result(width, lines, image.channels, image.bytes);
    for (int32_t y = 0; y < lines; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            for (int32_t c = 0; c < image.channels; ++c) {
                result.at(x, y, c) = image.at(nearestItem(x, image.width, width),
                                              nearestItem(y, image.lines, lines), c);
            }
        }
    }
    return result;
}

}  // namespace vorn_test
