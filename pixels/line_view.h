// Lines and channels of a chunky buffer.
#pragma once

#include "pixels/data_format.h"

namespace vorn {

// The first sample of a channel in a line.
inline uint8_t* lineStart(const VORN_ChunkyBuffer& buffer, int32_t channel, int32_t line) {
    return buffer.channelPlace[channel] + ptrdiff_t{line} * buffer.lineStep[channel];
}

inline bool isPresent(const VORN_ChunkyBuffer& buffer, int32_t channel) {
    return channel < usedChannels(buffer) && buffer.channelPlace[channel] != nullptr;
}

// How many of the channels 0 to 2 are present.
inline int32_t presentColors(const VORN_ChunkyBuffer& buffer) {
    return int32_t{isPresent(buffer, 0)} + isPresent(buffer, 1) + isPresent(buffer, 2);
}

}  // namespace vorn
