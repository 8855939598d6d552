// Samples in memory, which need not be aligned.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vorn {

static_assert(std::endian::native == std::endian::little,
              "16-bit samples are stored low byte first");

template <class Sample>
Sample loadSample(const uint8_t* at) {
    Sample sample;
    std::memcpy(&sample, at, sizeof(sample));
    return sample;
}

template <class Sample>
void storeSample(uint8_t* at, Sample sample) {
    std::memcpy(at, &sample, sizeof(sample));
}

// The same brightness in another sample size.
template <class To, class From>
constexpr To resizedSample(From sample) {
    if constexpr (sizeof(To) > sizeof(From)) {
        return static_cast<To>(sample * 257);
    } else if constexpr (sizeof(To) < sizeof(From)) {
        return static_cast<To>(sample >> 8);
    } else {
        return sample;
    }
}

}  // namespace vorn
