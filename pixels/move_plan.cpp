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

    // Takes other channels in if they lie in the same cells.
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
    ptrdiff_t start(ptrdiff_t runCount) const { return step < 0 ? high - runCount * kRun : low; }
    // Pixels that must be left for the runs to lie inside the line.
    ptrdiff_t margin(ptrdiff_t runCount) const {
        return 1 + std::max<ptrdiff_t>(runCount * kRun - used() + width() - 1, 0) / width();
    }
};

// The source or the destination of the channels that are moved together.
struct Side {
    ptrdiff_t sampleSize;
    int32_t count;
    Cells cells[ByteMove::kMost];
    int32_t cellsOf[VORN_MAX_CHANNELS];  // by channel
    int32_t firstRun[ByteMove::kMost];   // by cells

    void reset(ptrdiff_t size) {
        sampleSize = size;
        count = 0;
    }

    // Finds or makes the cells of a channel, at most so many.
    bool join(int32_t channel, ptrdiff_t at, ptrdiff_t step, int32_t most) {
        const Cells own = {step, at, at + sampleSize};
        int32_t i = 0;
        while (i < count && !cells[i].join(own)) i++;
        if (i == most || step == 0) return false;
        if (i == count) cells[count++] = own;
        cellsOf[channel] = i;
        return true;
    }
    ptrdiff_t runs(ptrdiff_t pixels) const {
        ptrdiff_t sum = 0;
        for (int32_t i = 0; i < count; i++) sum += cells[i].runs(pixels);
        return sum;
    }
    // Lays the runs over the cells. The result is the margin that they want.
    ptrdiff_t place(ByteMove::Runs& runs, ptrdiff_t pixels) {
        ptrdiff_t margin = pixels;
        int32_t run = 0;
        for (int32_t i = 0; i < count; i++) {
            const ptrdiff_t needed = cells[i].runs(pixels);
            margin = std::max(margin, cells[i].margin(needed));
            firstRun[i] = run;
            for (ptrdiff_t r = 0; r < needed; r++, run++) {
                runs.at[run] = cells[i].start(needed) + r * kRun;
                runs.step[run] = cells[i].step;
            }
        }
        return margin;
    }
};

class Planner {
  public:
    Planner(MovePlan& plan, const ChannelOffsets* channels, uint32_t sizeFlags)
        : plan_(plan), channels_(channels), sizeFlags_(sizeFlags) {}

    // Takes what can be moved together into at most so many destination cells.
    void gather(uint32_t candidates, int32_t mostCells) {
        from_.reset((sizeFlags_ & 2) != 0 ? 2 : 1);
        to_.reset((sizeFlags_ & 1) != 0 ? 2 : 1);
        plan_.channels = 0;
        for (uint32_t rest = candidates; rest != 0; rest &= rest - 1) {
            const int32_t c = std::countr_zero(rest);
            const ChannelOffsets& channel = channels_[c];
            Side to = to_;
            if (to.join(c, channel.to, channel.toStep, mostCells) &&
                from_.join(c, channel.from, channel.fromStep, ByteMove::kMost)) {
                to_ = to;
                plan_.channels |= 1u << c;
            }
        }
    }

    // Full outputs, where channels are spread over more cells than their samples need.
    MoveKernel planFull() {
        const ptrdiff_t pixels = kRun / to_.sampleSize;
        if (from_.count + to_.count <= 2 || to_.runs(pixels) > ByteMove::kMost ||
            from_.runs(pixels) > ByteMove::kMost) {
            return nullptr;
        }
        const bool full = place(pixels) == to_.runs(pixels) * kRun;
        return full ? moveKernels().whole[from_.runs(pixels)][to_.runs(pixels)] : nullptr;
    }

    // One output with as many pixels as it holds.
    MoveKernel planOne() {
        const int32_t samples = std::popcount(plan_.channels);
        if (samples == 0 || to_.cells[0].used() > kRun) return nullptr;
        const Cells& to = to_.cells[0];
        ptrdiff_t pixels = (kRun - to.used()) / to.width() + 1;
        while (pixels > 0 && from_.runs(pixels) > ByteMove::kMost) pixels--;
        if (pixels * samples < kFewestSamples) return nullptr;
        if (place(pixels) != pixels * samples * to_.sampleSize) return nullptr;  // they overlap
        const MoveKernels& kernels = moveKernels();
        const ptrdiff_t inputs = from_.runs(pixels);
        const bool gaps = to.width() != samples * to_.sampleSize;
        return gaps ? kernels.gaps[inputs] : kernels.whole[inputs][1];
    }

  private:
    // Says where each byte comes from. The result is how many bytes are written.
    int32_t place(ptrdiff_t pixels) {
        ByteMove& bytes = plan_.bytes;
        bytes.pixels = static_cast<int32_t>(pixels);
        plan_.margin = static_cast<int32_t>(
            std::max(from_.place(bytes.from, pixels), to_.place(bytes.to, pixels)));
        std::memset(bytes.source, ByteMove::kNone, sizeof(bytes.source));
        uint64_t written = 0;
        for (uint32_t rest = plan_.channels; rest != 0; rest &= rest - 1) {
            written |= placeChannel(std::countr_zero(rest));
        }
        bytes.written = static_cast<uint32_t>(written & 0xFFFF);
        return std::popcount(written);
    }

    uint64_t placeChannel(int32_t c) {
        ByteMove& bytes = plan_.bytes;
        const int32_t input = from_.firstRun[from_.cellsOf[c]];
        const int32_t output = to_.firstRun[to_.cellsOf[c]];
        const bool highByte = from_.sampleSize > to_.sampleSize;
        const ptrdiff_t nextByte = from_.sampleSize == to_.sampleSize ? 1 : 0;
        uint64_t written = 0;
        for (ptrdiff_t p = 0; p < bytes.pixels; p++) {
            ptrdiff_t from = channels_[c].from + p * channels_[c].fromStep - bytes.from.at[input];
            ptrdiff_t to = channels_[c].to + p * channels_[c].toStep - bytes.to.at[output];
            from += highByte ? 1 : 0;
            for (ptrdiff_t b = 0; b < to_.sampleSize; b++, to++, from += nextByte) {
                bytes.source[output + to / kRun][input + from / kRun][to % kRun] =
                    static_cast<uint8_t>(from % kRun);
                written |= uint64_t{1} << (output * kRun + to);
            }
        }
        return written;
    }

    MovePlan& plan_;
    const ChannelOffsets* channels_;
    uint32_t sizeFlags_;
    Side from_{}, to_{};
};

// One run of samples on either side, for which there are kernels without a plan.
bool isStraight(const ChannelOffsets& channel, uint32_t sizeFlags) {
    return channel.fromStep == ((sizeFlags & 2) != 0 ? 2 : 1) &&
           channel.toStep == ((sizeFlags & 1) != 0 ? 2 : 1);
}

}  // namespace

void planMove(MovePlan& plan,
              const ChannelOffsets* channels,
              uint32_t candidates,
              uint32_t sizeFlags) {
    const int32_t first = std::countr_zero(candidates);
    plan.kernel = nullptr;
    if (!isStraight(channels[first], sizeFlags)) {
        Planner planner(plan, channels, sizeFlags);
        planner.gather(candidates, ByteMove::kMost);
        plan.kernel = planner.planFull();
        if (plan.kernel != nullptr) return;
        planner.gather(candidates, 1);
        plan.kernel = planner.planOne();
    }
    if (plan.kernel == nullptr) plan.channels = 1u << first;
}

}  // namespace vorn
