#include "scale/average_scaler.h"

#include <algorithm>

namespace vorn {

bool AverageScaler::prepare() {
    nextLine_ = currentLine_ = linesAdded_ = 0;
    if (!sampleAreas_.build(srcWidth_, dstWidth_) || !lineAreas_.build(srcLines_, dstLines_)) {
        return false;
    }
    // More than are used: kernels load the sums of whole runs, as if all pixels had four channels.
    constexpr size_t kSlack = kAreaRun * kMaxGroupChannels;
    sums_ = allocCleared<uint32_t>(static_cast<size_t>(srcWidth_) * lines_.channels() + kSlack);
    return sums_ != nullptr;
}

void AverageScaler::release() {
    sampleAreas_.release();
    lineAreas_.release();
    sums_.reset();
}

uint32_t* AverageScaler::sumsOf(const ChannelGroup& group) const {
    return sums_.get() + static_cast<size_t>(group.before) * static_cast<size_t>(srcWidth_);
}

// Adds lines up as they come. The last line of a span stays at the ring's read side: the next span
// may begin with it.
bool AverageScaler::takeLines() {
    const AreaSpan& span = lineAreas_.spans.get()[nextLine_];
    while (linesAdded_ < span.count) {
        for (; currentLine_ < span.first + linesAdded_ && !sourceRing_.empty(); ++currentLine_) {
            sourceRing_.take();
        }
        if (sourceRing_.empty()) return false;
        const int32_t count = std::min(
            {span.count - linesAdded_, sourceRing_.waiting(), WeightedLines<uint8_t>::kMost});
        if (bytes_ == 1) {
            addLines<uint8_t>(count);
        } else {
            addLines<uint16_t>(count);
        }
        linesAdded_ += count;
    }
    return true;
}

// Lines that have to be gathered can only be had one at a time.
template <class Sample>
void AverageScaler::addLines(int32_t count) {
    for (const ChannelGroup& group : lines_.groups()) {
        if (group.sourcePacked) {
            addLines<Sample>(group, 0, count);
        } else {
            for (int32_t k = 0; k < count; ++k) addLines<Sample>(group, k, 1);
        }
    }
}

// `first` counts from the ring's current line.
template <class Sample>
void AverageScaler::addLines(const ChannelGroup& group, int32_t first, int32_t count) {
    const uint32_t* weights = lineAreas_.weights.get() + lineAreas_.spans.get()[nextLine_].weights;
    WeightedLines<Sample> lines;
    for (; lines.count < count; ++lines.count) {
        const int32_t k = first + lines.count;
        lines.lines[lines.count] = sourceLine<Sample>(group, k);
        lines.weights[lines.count] = weights[linesAdded_ + k];
    }
    averageKernels<Sample>().addLines(
        sumsOf(group), lines, linesAdded_ + first == 0,
        static_cast<size_t>(srcWidth_) * static_cast<size_t>(group.channels));
}

void AverageScaler::makeLine() {
    if (bytes_ == 1) {
        finishLine<uint8_t>();
    } else {
        finishLine<uint16_t>();
    }
    linesAdded_ = 0;
    ++nextLine_;
}

template <class Sample>
void AverageScaler::finishLine() {
    const unsigned totalShift = sampleAreas_.shift + lineAreas_.shift;
    const AverageKernels<Sample>& kernels = averageKernels<Sample>();
    const auto& forms =
        sizeof(Sample) == 1 && totalShift <= 24 ? kernels.finishNarrow : kernels.finishWide;
    for (const ChannelGroup& group : lines_.groups()) {
        forms[group.channels](destinationLine<Sample>(group), sumsOf(group), sampleAreas_,
                              dstWidth_, totalShift);
        finishDestinationLine(group);
    }
}

}  // namespace vorn
