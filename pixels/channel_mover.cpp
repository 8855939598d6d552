#include "pixels/channel_mover.h"

#include <bit>

namespace vorn {

void ChannelMover::plan() {
    for (uint32_t left = (1u << channels_) - 1; left != 0; left &= ~part_[parts_++].channels) {
        planMove(part_[parts_], channel_, left, sizeFlags_);
    }
}

void ChannelMover::move(int32_t sourceFirst, int32_t destinationFirst, int32_t count) const {
    for (int32_t i = 0; i < parts_; i++) {
        const MovePlan& part = part_[i];
        int32_t done = 0;
        if (part.kernel != nullptr && count >= part.margin) {
            const int32_t lastStart = count - part.margin;
            part.kernel(part.bytes, sourceFirst, destinationFirst, lastStart);
            done = lastStart + part.bytes.pixels;
        }
        if (done < count) {
            moveSingly(part.channels, sourceFirst + done, destinationFirst + done, count - done);
        }
    }
}

void ChannelMover::moveSingly(uint32_t channels,
                              int32_t sourceFirst,
                              int32_t destinationFirst,
                              int32_t count) const {
    for (uint32_t rest = channels; rest != 0; rest &= rest - 1) {
        const ChannelMove& channel = channel_[std::countr_zero(rest)];
        copyKernelFor(sizeFlags_, channel.fromStep, channel.toStep)(
            channel.from + sourceFirst * channel.fromStep, channel.fromStep,
            channel.to + destinationFirst * channel.toStep, channel.toStep, count);
    }
}

}  // namespace vorn
