#include "pixels/channel_mover.h"

#include <algorithm>
#include <bit>

#include "support/thread_state.h"

namespace vorn {
namespace {

// The latest plans of a thread: the lines of a transfer all want the same few.
class PlanMemory {
  public:
    const LayoutPlans& plansFor(const MoveLayout& layout) {
        Entry* oldest = entries_;
        for (Entry& entry : entries_) {
            if (entry.layout == layout) {
                entry.lastUse = ++uses_;
                return entry.plans;
            }
            if (entry.lastUse < oldest->lastUse) oldest = &entry;
        }
        oldest->layout = layout;
        oldest->lastUse = ++uses_;
        makePlans(oldest->plans, layout);
        return oldest->plans;
    }

  private:
    struct Entry {
        MoveLayout layout;
        LayoutPlans plans;
        uint64_t lastUse = 0;
    };

    static void makePlans(LayoutPlans& plans, const MoveLayout& layout) {
        plans.count = 0;
        for (uint32_t left = (1u << layout.channels) - 1; left != 0;) {
            MovePlan& plan = plans.plan[plans.count++];
            planMove(plan, layout.channel, left, layout.sizeFlags);
            left &= ~plan.channels;
        }
    }

    Entry entries_[ChannelMover::kMoversAtOnce];
    uint64_t uses_ = 0;
};

ptrdiff_t distance(const uint8_t* from, const uint8_t* to) {
    return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(to) -
                                  reinterpret_cast<uintptr_t>(from));
}

}  // namespace

bool MoveLayout::operator==(const MoveLayout& other) const {
    return kernels == other.kernels && sizeFlags == other.sizeFlags && channels == other.channels &&
           std::equal(channel, channel + channels, other.channel);
}

void ChannelMover::add(const ChannelMove& channel) {
    if (layout_.channels == 0) {
        source_ = channel.from;
        destination_ = channel.to;
    }
    layout_.channel[layout_.channels++] = {distance(source_, channel.from), channel.fromStep,
                                           distance(destination_, channel.to), channel.toStep};
}

void ChannelMover::plan() {
    layout_.kernels = &moveKernels();
    plans_ = &threadState<PlanMemory>().plansFor(layout_);
}

void ChannelMover::move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const {
    for (int32_t i = 0; i < plans_->count; i++) {
        const MovePlan& plan = plans_->plan[i];
        MovePlace place = {source_, destination_, sourceFirst, destinationFirst};
        int32_t left = count;
        if (plan.kernel != nullptr && count >= plan.margin) {
            const int32_t lastStart = count - plan.margin;
            plan.kernel(plan.bytes, place, lastStart);
            const int32_t done = lastStart + plan.bytes.pixels;
            place.sourceFirst += done;
            place.destinationFirst += done;
            left -= done;
        }
        if (left > 0) moveSingly(plan.channels, place, left);
    }
}

void ChannelMover::moveSingly(uint32_t channels, const MovePlace& place, int32_t count) const {
    for (uint32_t rest = channels; rest != 0; rest &= rest - 1) {
        const ChannelOffsets& channel = layout_.channel[std::countr_zero(rest)];
        copyKernelFor(layout_.sizeFlags, channel.fromStep, channel.toStep)(
            place.source + channel.from + place.sourceFirst * channel.fromStep, channel.fromStep,
            place.destination + channel.to + place.destinationFirst * channel.toStep,
            channel.toStep, count);
    }
}

}  // namespace vorn
