// Plain reference: whole images, straight from the definition.
#pragma once

#include "tests/scale/test_image.h"

namespace vorn_test {

inline int64_t bilinearPosition(int64_t i, int64_t n, int64_t m, int64_t unit) {
    return m == 1 ? 0 : i * (n - 1) * unit / (m - 1);
}

inline Image referenceBilinear(const Image& image, int32_t width, int32_t lines) {
    Image result(width, lines, image.channels, image.bytes);
    const int bits = image.bytes == 1 ? 16 : 15;
    const int64_t unit = int64_t{1} << bits;
    for (int32_t y = 0; y < lines; ++y) {
        const int64_t py = bilinearPosition(y, image.lines, lines, unit);
        const auto yi = static_cast<int32_t>(py / unit);
        const int64_t lowerWeight = py % unit, upperWeight = unit - lowerWeight;
        for (int32_t x = 0; x < width; ++x) {
            const int64_t px = bilinearPosition(x, image.width, width, unit);
            const auto xi = static_cast<int32_t>(px / unit);
            const int64_t right = px % unit, left = unit - right;
            for (int32_t c = 0; c < image.channels; ++c) {
                const auto across = [&](int32_t line) {
                    int64_t sum = image.at(xi, line, c) * left;
                    if (right != 0) sum += image.at(xi + 1, line, c) * right;
                    return sum;
                };
                int64_t sum = across(yi);
                if (lowerWeight != 0) {
                    sum = (sum >> bits) * upperWeight + (across(yi + 1) >> bits) * lowerWeight;
                }
                result.at(x, y, c) = static_cast<int32_t>((sum + unit / 2) >> bits);
            }
        }
    }
    return result;
}

}  // namespace vorn_test
