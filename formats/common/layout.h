// Layouts in which the samples of a pixel lie side by side: how modules keep their lines.
#pragma once

#include <vorn/types.h>

namespace formats {

// Fills in all of a record but its channel places.
template <class Record>
Record interleavedSteps(
    int32_t width, int32_t height, int32_t channels, int32_t bytesPerChannel, bool alpha) {
    Record record{};
    record.layout = DF_Explicit;
    record.width = width;
    record.height = height;
    record.channels = channels;
    record.bytesPerChannel = bytesPerChannel;
    record.flags = alpha ? VORN_DF_ALPHA : 0;
    for (int32_t c = 0; c < channels; ++c) {
        record.pixelStep[c] = channels * bytesPerChannel;
        record.lineStep[c] = width * channels * bytesPerChannel;
    }
    return record;
}

// The lines lie at the start of each block.
inline VORN_DataFormat interleavedFormat(
    int32_t width, int32_t height, int32_t channels, int32_t bytesPerChannel, bool alpha) {
    auto format =
        interleavedSteps<VORN_DataFormat>(width, height, channels, bytesPerChannel, alpha);
    for (int32_t c = 0; c < channels; ++c)
        format.channelPlace[c] = static_cast<uint32_t>(c * bytesPerChannel);
    return format;
}

// The lines lie at `pixels`.
inline VORN_ChunkyBuffer interleavedBuffer(
    uint8_t* pixels, int32_t width, int32_t height, int32_t channels, int32_t bytesPerChannel) {
    auto buffer =
        interleavedSteps<VORN_ChunkyBuffer>(width, height, channels, bytesPerChannel, false);
    for (int32_t c = 0; c < channels; ++c) buffer.channelPlace[c] = pixels + c * bytesPerChannel;
    return buffer;
}

}  // namespace formats
