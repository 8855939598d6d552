#include "scale/nearest_scaler.h"

#include <cstring>

#include "scale/nearest_kernels.h"

namespace vorn {
namespace {

// How far to move on among `n` source items before each of `m` destination items. Destination item
// i gets source item ceil(i * n / m) when there are fewer of them, else floor(i * n / m).
void fillSteps(uint16_t* steps, int32_t n, int32_t m) {
    int32_t error = 0;
    if (n > m) {
        *steps = 0;
        for (int32_t i = 1; i < m; ++i) {
            uint16_t step = 0;
            for (; error < n; error += m) ++step;
            error -= n;
            steps[i] = step;
        }
        return;
    }
    for (int32_t j = 0; j < n; ++j) {
        uint16_t step = j == 0 ? 0 : 1;
        for (; error < m; error += n) {
            *steps++ = step;
            step = 0;
        }
        error -= m;
    }
}

Owned<uint16_t> stepTable(int32_t n, int32_t m) {
    Owned<uint16_t> steps(
        static_cast<uint16_t*>(AllocMemory(static_cast<size_t>(m) * sizeof(uint16_t), 0)));
    if (steps) fillSteps(steps.get(), n, m);
    return steps;
}

template <class Sample>
void copySteps(uint8_t* out,
               ptrdiff_t outStep,
               const uint8_t* in,
               ptrdiff_t inStep,
               const uint16_t* steps,
               int32_t count) {
    for (int32_t i = 0; i < count; ++i, out += outStep) {
        in += steps[i] * inStep;
        std::memcpy(out, in, sizeof(Sample));
    }
}

}  // namespace

bool NearestScaler::prepare() {
    nextLine_ = pendingLines_ = 0;
    sampleSteps_ = stepTable(srcWidth_, dstWidth_);
    lineSteps_ = stepTable(srcLines_, dstLines_);
    if (!sampleSteps_ || !lineSteps_) return false;
    if (dstLines_ <= srcLines_) return true;
    const size_t row = static_cast<size_t>(dstWidth_) * lines_.channels();
    repeated_.reset(static_cast<uint8_t*>(AllocMemory(row * static_cast<size_t>(bytes_), 0)));
    return repeated_ != nullptr;
}

void NearestScaler::release() {
    sampleSteps_.reset();
    lineSteps_.reset();
    repeated_.reset();
}

bool NearestScaler::takeLines() {
    while (!sourceRing_.empty() && pendingLines_ > 0) {
        sourceRing_.take();
        --pendingLines_;
    }
    return !sourceRing_.empty();
}

void NearestScaler::makeLine() {
    for (const ChannelGroup& group : lines_.groups()) {
        if (bytes_ == 1) {
            copyGroup<uint8_t>(group);
        } else {
            copyGroup<uint16_t>(group);
        }
    }
    ++nextLine_;
    pendingLines_ = nextLine_ < dstLines_ ? lineSteps_.get()[nextLine_] : 0;
}

template <class Sample>
void NearestScaler::copyGroup(const ChannelGroup& group) {
    if (group.sourcePacked && group.destinationPacked) return copyPacked<Sample>(group);
    for (int32_t c = group.first; c < group.first + group.channels; ++c) {
        copySteps<Sample>(lines_.destinationSample(c, destinationRing_.writeLine()),
                          lines_.destinationRecord().pixelStep[c],
                          lines_.sourceSample(c, sourceRing_.readLine()),
                          lines_.sourceRecord().pixelStep[c], sampleSteps_.get(), dstWidth_);
    }
}

// When lines are repeated, the packed line is kept, so that the repetitions are plain copies.
template <class Sample>
void NearestScaler::copyPacked(const ChannelGroup& group) {
    const auto copy = nearestKernels<Sample>().copy[group.channels];
    const Sample* in = sourceLine<Sample>(group);
    Sample* out = destinationLine<Sample>(group);
    if (!repeated_) return copy(out, in, sampleSteps_.get(), dstWidth_);

    const size_t width = static_cast<size_t>(dstWidth_);
    Sample* row =
        reinterpret_cast<Sample*>(repeated_.get()) + width * static_cast<size_t>(group.before);
    if (lineSteps_.get()[nextLine_] != 0 || nextLine_ == 0) {
        copy(row, in, sampleSteps_.get(), dstWidth_);
    }
    std::memcpy(out, row, width * static_cast<size_t>(group.channels) * sizeof(Sample));
}

}  // namespace vorn
