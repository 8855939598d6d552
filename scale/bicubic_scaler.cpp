#include "scale/bicubic_scaler.h"

#include <algorithm>

#include "scale/bicubic_kernels.h"

namespace vorn {

bool BicubicScaler::prepare() {
    nextLine_ = linesTaken_ = 0;
    const double blur = bicubicBlur();
    if (!samples_.build(srcWidth_, dstWidth_, blur) ||
        !sourceLines_.build(srcLines_, dstLines_, blur)) {
        return false;
    }
    const auto rows = static_cast<size_t>(sourceLines_.maxCount);
    const size_t row = static_cast<size_t>(dstWidth_) * lines_.channels();
    rows_.reset(static_cast<int32_t*>(AllocMemory(rows * row * sizeof(int32_t), 0)));
    lineRows_.reset(static_cast<const int32_t**>(AllocMemory(rows * sizeof(int32_t*), 0)));
    return rows_ && lineRows_;
}

void BicubicScaler::release() {
    samples_.release();
    sourceLines_.release();
    rows_.reset();
    lineRows_.reset();
}

int32_t* BicubicScaler::rowOf(int32_t line, const ChannelGroup& group) const {
    const auto slot = static_cast<size_t>(line % sourceLines_.maxCount);
    const auto width = static_cast<size_t>(dstWidth_);
    return rows_.get() + (slot * lines_.channels() + static_cast<size_t>(group.before)) * width;
}

bool BicubicScaler::takeLines() {
    const Contribution& entry = sourceLines_.contributions.get()[nextLine_];
    for (; linesTaken_ < entry.first + entry.count; ++linesTaken_) {
        if (sourceRing_.empty()) return false;
        // A line before the first is of no use to this destination line and all later ones.
        if (linesTaken_ >= entry.first) {
            if (bytes_ == 1) {
                makeRows<uint8_t>();
            } else {
                makeRows<uint16_t>();
            }
        }
        sourceRing_.take();
    }
    return true;
}

template <class Sample>
void BicubicScaler::makeRows() {
    for (const ChannelGroup& group : lines_.groups()) {
        bicubicKernels<Sample>().horizontal[group.channels](rowOf(linesTaken_, group),
                                                            sourceLine<Sample>(group), samples_);
    }
}

int32_t BicubicScaler::makeLines(int32_t most) {
    const int32_t lines = bytes_ == 1 ? makeLinesOf<uint8_t>(most) : makeLinesOf<uint16_t>(most);
    nextLine_ += lines;
    return lines;
}

// The next destination lines that are made of the same four rows, as enlarging has it.
int32_t BicubicScaler::linesOfSameRows(int32_t most) const {
    const Contribution* entry = sourceLines_.contributions.get() + nextLine_;
    int32_t lines = 1;
    for (const ChannelGroup& group : lines_.groups()) {
        if (!group.destinationPacked) return lines;
    }
    while (lines < most && entry[lines].first == entry->first && entry->count == 4 &&
           entry[lines].count == 4) {
        ++lines;
    }
    return lines;
}

template <class Sample>
int32_t BicubicScaler::makeLinesOf(int32_t most) {
    const BicubicKernels<Sample>& kernels = bicubicKernels<Sample>();
    const Contribution& entry = sourceLines_.contributions.get()[nextLine_];
    const int16_t* weights = sourceLines_.weights.get() + entry.weights;
    int32_t lines = linesOfSameRows(std::min(most, kernels.kMostLines));
    while (lines > 1 && !kernels.fourRows[lines]) --lines;
    for (const ChannelGroup& group : lines_.groups()) {
        for (int32_t k = 0; k < entry.count; ++k) {
            lineRows_.get()[k] = rowOf(entry.first + k, group);
        }
        auto* out = destinationLine<Sample>(group);
        const size_t count = static_cast<size_t>(dstWidth_) * static_cast<size_t>(group.channels);
        if (lines > 1) {
            kernels.fourRows[lines](out, destinationLineStep<Sample>(group), lineRows_.get(),
                                    weights, count);
        } else {
            kernels.vertical(out, lineRows_.get(), weights, entry.count, count);
            finishDestinationLine(group);
        }
    }
    return lines;
}

}  // namespace vorn
