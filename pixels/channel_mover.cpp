#include "pixels/channel_mover.h"

#include <algorithm>
#include <bit>

#include "support/thread_state.h"

namespace vorn {
namespace {

// The latest plans of a thread: the lines of a transfer all want the same few.
struct PlanMemory {
    static constexpr int kPlans = 4;
    PlannedMoves plans[kPlans];
    int next = 0;

    const PlannedMoves* find(const PlannedMoves& wanted) const {
        const auto* found = std::find_if(plans, plans + kPlans, [&](const PlannedMoves& plan) {
            return plan.isFor(wanted);
        });
        return found == plans + kPlans ? nullptr : found;
    }
    void keep(const PlannedMoves& plan) {
        plans[next] = plan;
        next = (next + 1) % kPlans;
    }
};

ptrdiff_t distance(const uint8_t* from, const uint8_t* to) {
    return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(to) -
                                  reinterpret_cast<uintptr_t>(from));
}

}  // namespace

bool PlannedMoves::isFor(const PlannedMoves& wanted) const {
    return kernels == wanted.kernels && sizeFlags == wanted.sizeFlags &&
           channels == wanted.channels &&
           std::equal(channel, channel + channels, wanted.channel);
}

void PlannedMoves::plan() {
    for (uint32_t left = (1u << channels) - 1; left != 0; left &= ~part[parts++].channels) {
        planMove(part[parts], channel, left, sizeFlags);
    }
}

void ChannelMover::add(const ChannelMove& channel) {
    if (moves_.channels == 0) {
        source_ = channel.from;
        destination_ = channel.to;
    }
    moves_.channel[moves_.channels++] = {distance(source_, channel.from), channel.fromStep,
                                         distance(destination_, channel.to), channel.toStep};
}

void ChannelMover::plan() {
    moves_.kernels = &moveKernels();
    auto& memory = threadState<PlanMemory>();
    if (const PlannedMoves* known = memory.find(moves_)) {
        moves_.parts = known->parts;
        std::copy_n(known->part, known->parts, moves_.part);
    } else {
        moves_.plan();
        memory.keep(moves_);
    }
}

void ChannelMover::move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const {
    for (int32_t i = 0; i < moves_.parts; i++) {
        const MovePlan& part = moves_.part[i];
        MovePlace place = {source_, destination_, sourceFirst, destinationFirst};
        int32_t left = count;
        if (part.kernel != nullptr && count >= part.margin) {
            const int32_t lastStart = count - part.margin;
            part.kernel(part.bytes, place, lastStart);
            const int32_t done = lastStart + part.bytes.pixels;
            place.sourceFirst += done;
            place.destinationFirst += done;
            left -= done;
        }
        if (left > 0) moveSingly(part.channels, place, left);
    }
}

void ChannelMover::moveSingly(uint32_t channels, const MovePlace& place, int32_t count) const {
    for (uint32_t rest = channels; rest != 0; rest &= rest - 1) {
        const ChannelOffsets& channel = moves_.channel[std::countr_zero(rest)];
        copyKernelFor(moves_.sizeFlags, channel.fromStep, channel.toStep)(
            place.source + channel.from + place.sourceFirst * channel.fromStep, channel.fromStep,
            place.destination + channel.to + place.destinationFirst * channel.toStep,
            channel.toStep, count);
    }
}

}  // namespace vorn
