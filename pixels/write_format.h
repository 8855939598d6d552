// The layout of the blocks that a saver gets.
#pragma once

#include <vorn/types.h>

namespace vorn {

// Room that a block's message needs beside its lines, generously.
inline constexpr int32_t kBlockMargin = 256;

// Bytes of a block's message with that many bytes of lines.
uint32_t blockMessageSize(uint32_t lineBytes);

// The format of lines with the buffer's width and sample size after a conversion: each line holds
// the runs of its channels, `height` is left to the caller. False when the buffer's sizes or the
// channels that the conversion makes are impossible (a palette lookup without a palette).
bool makeBlockFormat(const VORN_ChunkyBuffer& buffer,
                     uint32_t conversion,
                     const VORN_ChunkyBuffer* palette,
                     VORN_DataFormat& format);

}  // namespace vorn
