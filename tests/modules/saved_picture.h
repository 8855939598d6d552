// The file that test_saver makes: this head, the message that the saver was opened with (a flat tag
// list), the blocks that the host sent, and the samples, pixel by pixel.
#pragma once

#include <cstdint>

struct SavedHead {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;
    int32_t bytesPerChannel = 0;
    int32_t tagBytes = 0;
    int32_t blocks = 0;
};

struct SavedBlock {
    int32_t firstLine = 0;
    int32_t lines = 0;
    int32_t channels = 0;
    int32_t bytes = 0;  // of the lines, as the block's data item holds them
};
