// The file that test_saver makes: this head, the message that the saver was opened with (a flat tag
// list), and the samples, pixel by pixel.
#pragma once

#include <cstdint>

struct SavedHead {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    int32_t bytesPerChannel = 0;
    int32_t tagBytes = 0;
};
