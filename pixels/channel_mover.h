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

// What is moved: the channels' places are counted from where the first one lies.
struct MoveLayout {
    uint32_t sizeFlags;
    int32_t channels = 0;
    const MoveKernels* kernels = nullptr;
    ChannelOffsets channel[VORN_MAX_CHANNELS];

    bool operator==(const MoveLayout& other) const;
};

// How: the same plans serve all lines that are laid out so.
struct LayoutPlans {
    int32_t count = 0;
    MovePlan plan[VORN_MAX_CHANNELS];
};

// Add the channels, plan, then move as often as needed. Channels that lie in the same destination
// cells are moved together where there is a kernel for it, the others one by one.
//
// A thread's movers share its latest plans: at most kMoversAtOnce of them may be in use.
class ChannelMover {
  public:
    static constexpr int kMoversAtOnce = 4;

    explicit ChannelMover(uint32_t sizeFlags) { layout_.sizeFlags = sizeFlags; }

    void add(const ChannelMove& channel);
    void plan();

    // `count` pixels, from the given ones on.
    void move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const;

  private:
    void moveSingly(uint32_t channels, const MovePlace& place, int32_t count) const;

    const uint8_t* source_ = nullptr;
    uint8_t* destination_ = nullptr;
    MoveLayout layout_;
    const LayoutPlans* plans_ = nullptr;
};

}  // namespace vorn
