// Colours that were multiplied by alpha, as some files keep them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace formats {

template <class Sample>
void divideByAlpha(uint8_t* line, size_t pixels, size_t channels) {
    constexpr uint32_t kFull = static_cast<Sample>(-1);
    std::vector<Sample> pixel(channels);
    for (size_t x = 0; x < pixels; ++x, line += channels * sizeof(Sample)) {
        std::memcpy(pixel.data(), line, channels * sizeof(Sample));
        const uint32_t alpha = pixel.back();
        for (size_t c = 0; alpha != 0 && c + 1 < channels; ++c)
            pixel[c] = static_cast<Sample>(std::min(kFull, (pixel[c] * kFull + alpha / 2) / alpha));
        std::memcpy(line, pixel.data(), channels * sizeof(Sample));
    }
}

// The last channel of each pixel is alpha.
inline void divideByAlpha(uint8_t* line, size_t pixels, size_t channels, size_t bytesPerChannel) {
    if (bytesPerChannel == 1)
        divideByAlpha<uint8_t>(line, pixels, channels);
    else
        divideByAlpha<uint16_t>(line, pixels, channels);
}

}  // namespace formats
