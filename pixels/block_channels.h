// How many channels a picture has after a colour conversion.
#pragma once

#include <cstdint>

namespace vorn {

// With 2 or 4 channels the last one is kept aside as alpha. `code` is a conversion code (see
// VORN_L_SetColorSpaceCorrection), `paletteChannels` what a palette lookup gives.
constexpr int32_t blockChannels(int32_t channels, uint32_t code, int32_t paletteChannels) {
    const int32_t alpha = channels == 2 || channels == 4 ? 1 : 0;
    int32_t color = channels - alpha;
    const bool toGray = code == 1 || code == 3;
    const bool fromGray = code == 2 || code == 4;
    if (toGray && color == 3)
        color = 1;
    else if (fromGray && color == 1)
        color = 3;
    else if (code == 7)
        color = paletteChannels;
    return color + alpha;
}

}  // namespace vorn
