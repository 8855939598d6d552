// Moves channels of a line from one layout and sample size to another.
#pragma once

#include <vorn/types.h>

#include "pixels/move_plan.h"

namespace vorn {

// Add the channels, plan, then move as often as needed. Channels that lie in the same destination
// cells are moved together where there is a kernel for it, the others one by one.
class ChannelMover {
  public:
    explicit ChannelMover(uint32_t sizeFlags) : sizeFlags_(sizeFlags) {}

    void add(const ChannelMove& channel) { channel_[channels_++] = channel; }
    void plan();

    // `count` pixels, from the given ones on.
    void move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const;

  private:
    void moveSingly(
        uint32_t channels, int32_t sourceFirst, int32_t destinationFirst, int32_t count) const;

    uint32_t sizeFlags_;
    int32_t channels_ = 0;
    int32_t parts_ = 0;
    ChannelMove channel_[VORN_MAX_CHANNELS];
    MovePlan part_[VORN_MAX_CHANNELS];
};

}  // namespace vorn
