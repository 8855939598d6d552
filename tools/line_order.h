// What becomes of a picture's lines when it is brought from one orientation into another.
#pragma once

#include <cstdint>

namespace vorn::tool {

enum class LineOrder {
    kSame,
    kMirrored,  // the same lines in the same order, each from right to left
    kOther,     // upside down, or columns become lines
};

// Orientations 0 to 3 are a picture turned by quarter turns, 4 to 7 its mirror images. Any other
// number changes nothing.
constexpr LineOrder lineOrder(int32_t from, int32_t to) {
    const auto isOrientation = [](int32_t number) { return number >= 0 && number < 8; };
    if (from == to || !isOrientation(from) || !isOrientation(to)) {
        return LineOrder::kSame;
    }
    const bool mirrored = (from < 4) != (to < 4);
    return mirrored && (from + to) % 4 == 0 ? LineOrder::kMirrored : LineOrder::kOther;
}

}  // namespace vorn::tool
