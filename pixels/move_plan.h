// Finds the bytes that channels of a line are made of, for the kernels that move sixteen at a time.
#pragma once

#include "pixels/line_kernels.h"

namespace vorn {

// A channel's first sample on either side, counted from some place, and the bytes from sample to
// sample.
struct ChannelOffsets {
    ptrdiff_t from, fromStep;
    ptrdiff_t to, toStep;

    bool operator==(const ChannelOffsets&) const = default;
};

// How channels that lie in the same destination cells are moved. Without a kernel they are copied
// one by one.
struct MovePlan {
    uint32_t channels;  // one bit each
    MoveKernel kernel;
    int32_t margin;  // the pixels that must be left for a move; not all of them are made by it
    ByteMove bytes;
};

// Plans the first of the channels (one bit each) and those that share its cells.
void planMove(MovePlan& plan,
              const ChannelOffsets* channels,
              uint32_t candidates,
              uint32_t sizeFlags);

}  // namespace vorn
