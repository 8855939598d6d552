// Moves channels of a line from one layout and sample size to another.
#pragma once

#include <vorn/types.h>

#include "pixels/move_plan.h"

namespace vorn {

// A channel's first sample on either side, and the bytes from sample to sample.
struct ChannelMove {
    const uint8_t* from;
    ptrdiff_t fromStep;
    uint8_t* to;
    ptrdiff_t toStep;
};

// What is moved, and how. The same plan serves any lines that are laid out so.
struct PlannedMoves {
    uint32_t sizeFlags = 0;
    int32_t channels = 0;
    int32_t parts = 0;
    const MoveKernels* kernels = nullptr;  // null: nothing is planned yet
    ChannelOffsets channel[VORN_MAX_CHANNELS];
    MovePlan part[VORN_MAX_CHANNELS];

    bool isFor(const PlannedMoves& other) const;
    void plan();
};

// Add the channels, plan, then move as often as needed. Channels that lie in the same destination
// cells are moved together where there is a kernel for it, the others one by one.
class ChannelMover {
  public:
    explicit ChannelMover(uint32_t sizeFlags) { moves_.sizeFlags = sizeFlags; }

    void add(const ChannelMove& channel);
    void plan();

    // `count` pixels, from the given ones on.
    void move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const;

  private:
    void moveSingly(uint32_t channels, const MovePlace& place, int32_t count) const;

    const uint8_t* source_ = nullptr;
    uint8_t* destination_ = nullptr;
    PlannedMoves moves_;
};

}  // namespace vorn
