// CMYK as the paper under the inks looks, for hosts that ask for RGB.
#pragma once

#include <cstdint>
#include <limits>

namespace formats {

// What is left of one colour of white paper under its ink and black. Full ink is the largest value.
template <class Sample>
Sample paperUnder(Sample ink, Sample black) {
    constexpr uint64_t kFull = std::numeric_limits<Sample>::max();
    return static_cast<Sample>(((kFull - ink) * (kFull - black) + kFull / 2) / kFull);
}

}  // namespace formats
