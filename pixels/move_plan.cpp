#include "pixels/move_plan.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "pixels/data_format.h"

namespace vorn {
namespace {

// Moves that make fewer samples at once aren't worth it.
constexpr int32_t kFewestSamples = 4;

constexpr ptrdiff_t kRun = ByteMove::kBytes;

// The cells in which some channels of one side lie: `low` to `high` in the first pixel.
struct Cells {
    ptrdiff_t step, low, high;

    // Takes another channel in if it lies in the same cells.
    bool join(const Cells& other) {
        const ptrdiff_t newLow = std::min(low, other.low);
        const ptrdiff_t newHigh = std::max(high, other.high);
        if (other.step != step || newHigh - newLow > width()) return false;
        low = newLow;
        high = newHigh;
        return true;
    }
    ptrdiff_t width() const { return step < 0 ? -step : step; }
    ptrdiff_t used() const { return high - low; }

    // Runs of bytes that cover the cells of so many pixels, and where they begin: they go on beyond
    // the last pixel, never before the first.
    ptrdiff_t runs(ptrdiff_t pixels) const {
        return ((pixels - 1) * width() + used() + kRun - 1) / kRun;
    }
    ptrdiff_t start(ptrdiff_t count) const {
        return step < 0 ? high - count * kRun : low;
    }
    // Pixels that must be left for the runs to lie inside the line.
    ptrdiff_t margin(ptrdiff_t count) const {
        return 1 + std::max<ptrdiff_t>(count * kRun - used() + width() - 1, 0) / width();
    }
};

// The channels of a plan.
struct Shape {
    Cells to;
    Cells from[ByteMove::kMostInputs];
    int32_t sources = 0;
    int32_t sourceOf[VORN_MAX_CHANNELS];
    int32_t firstInput[ByteMove::kMostInputs];

    // Finds or makes the source cells of a channel.
    bool joinSource(int32_t channel, const Cells& cells) {
        int32_t i = 0;
        while (i < sources && !from[i].join(cells)) i++;
        if (i == ByteMove::kMostInputs) return false;
        if (i == sources) from[sources++] = cells;
        sourceOf[channel] = i;
        return true;
    }

    // How many pixels a move makes, 0: none.
    int32_t pixels() const {
        if (to.width() == 0 || to.used() > kRun) return 0;
        ptrdiff_t count = (kRun - to.used()) / to.width() + 1;
        while (count > 0 && inputs(count) > ByteMove::kMostInputs) count--;
        return static_cast<int32_t>(count);
    }
    ptrdiff_t inputs(ptrdiff_t pixels) const {
        ptrdiff_t sum = 0;
        for (int32_t i = 0; i < sources; i++) sum += from[i].runs(pixels);
        return sum;
    }
};

// Gathers the channels that can be moved together.
Shape shapeOf(MovePlan& plan,
              const ChannelOffsets* channels,
              uint32_t candidates,
              uint32_t sizeFlags) {
    const ptrdiff_t sourceSize = (sizeFlags & 2) != 0 ? 2 : 1;
    const ptrdiff_t destinationSize = (sizeFlags & 1) != 0 ? 2 : 1;
    Shape shape;
    plan.channels = 0;
    for (uint32_t rest = candidates; rest != 0; rest &= rest - 1) {
        const int32_t c = std::countr_zero(rest);
        const ChannelOffsets& channel = channels[c];
        const Cells own = {channel.toStep, channel.to, channel.to + destinationSize};
        Cells to = plan.channels == 0 ? own : shape.to;
        if (to.join(own) || plan.channels == 0) {
            if (shape.joinSource(c, {channel.fromStep, channel.from, channel.from + sourceSize})) {
                shape.to = to;
                plan.channels |= 1u << c;
            }
        }
    }
    return shape;
}

// Lays the runs over both sides. The result is the number of inputs.
int32_t placeRuns(MovePlan& plan, Shape& shape) {
    ByteMove& bytes = plan.bytes;
    bytes.to = shape.to.start(1);
    bytes.toStep = shape.to.step;
    ptrdiff_t margin = std::max<ptrdiff_t>(bytes.pixels, shape.to.margin(1));
    int32_t inputs = 0;
    for (int32_t s = 0; s < shape.sources; s++) {
        const Cells& from = shape.from[s];
        const ptrdiff_t runs = from.runs(bytes.pixels);
        margin = std::max(margin, from.margin(runs));
        shape.firstInput[s] = inputs;
        for (ptrdiff_t i = 0; i < runs; i++, inputs++) {
            bytes.from[inputs] = from.start(runs) + i * kRun;
            bytes.fromStep[inputs] = from.step;
            std::memset(bytes.source[inputs], ByteMove::kNone, kRun);
        }
    }
    plan.margin = static_cast<int32_t>(margin);
    return inputs;
}

// Says where a channel's bytes come from.
void placeBytes(ByteMove& bytes, const ChannelOffsets& channel, int32_t input, uint32_t sizeFlags) {
    const ptrdiff_t size = (sizeFlags & 1) != 0 ? 2 : 1;
    ptrdiff_t to = channel.to - bytes.to;
    ptrdiff_t from = channel.from - bytes.from[input] + (sizeFlags == 2 ? 1 : 0);
    for (int32_t p = 0; p < bytes.pixels; p++, to += channel.toStep, from += channel.fromStep) {
        for (ptrdiff_t b = 0; b < size; b++) {
            const ptrdiff_t at = sizeFlags == 3 ? from + b : from;
            bytes.source[input + at / kRun][to + b] = static_cast<uint8_t>(at % kRun);
            bytes.written |= 1u << (to + b);
        }
    }
}

// One run of bytes on either side, which no kernel copies faster than the plain one.
bool isStraightCopy(const ChannelOffsets& channel, uint32_t sizeFlags) {
    return (sizeFlags == 0 && channel.fromStep == 1 && channel.toStep == 1) ||
           (sizeFlags == 3 && channel.fromStep == 2 && channel.toStep == 2);
}

}  // namespace

void planMove(MovePlan& plan,
              const ChannelOffsets* channels,
              uint32_t candidates,
              uint32_t sizeFlags) {
    plan.kernel = nullptr;
    if (isStraightCopy(channels[std::countr_zero(candidates)], sizeFlags)) {
        plan.channels = candidates & -candidates;
        return;
    }
    Shape shape = shapeOf(plan, channels, candidates, sizeFlags);
    const int32_t count = std::popcount(plan.channels);
    const int32_t size = (sizeFlags & 1) != 0 ? 2 : 1;
    plan.bytes.pixels = shape.pixels();
    const bool stays = std::any_of(shape.from, shape.from + shape.sources,
                                   [](const Cells& cells) { return cells.width() == 0; });
    if (plan.bytes.pixels * count < kFewestSamples || stays) return;

    const int32_t inputs = placeRuns(plan, shape);
    plan.bytes.written = 0;
    for (uint32_t rest = plan.channels; rest != 0; rest &= rest - 1) {
        const int32_t c = std::countr_zero(rest);
        placeBytes(plan.bytes, channels[c], shape.firstInput[shape.sourceOf[c]], sizeFlags);
    }
    const bool overlap = std::popcount(plan.bytes.written) != plan.bytes.pixels * count * size;
    const MoveKernels& kernels = moveKernels();
    const bool whole = shape.to.width() == count * size;
    if (!overlap) plan.kernel = (whole ? kernels.whole : kernels.gaps)[inputs];
}

}  // namespace vorn
