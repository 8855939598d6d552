#include "scale/bicubic_scaler.h"

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

void BicubicScaler::makeLine() {
    if (bytes_ == 1) {
        makeLineOf<uint8_t>();
    } else {
        makeLineOf<uint16_t>();
    }
    ++nextLine_;
}

template <class Sample>
void BicubicScaler::makeLineOf() {
    const Contribution& entry = sourceLines_.contributions.get()[nextLine_];
    const auto width = static_cast<size_t>(dstWidth_);
    for (const ChannelGroup& group : lines_.groups()) {
        for (int32_t k = 0; k < entry.count; ++k) {
            lineRows_.get()[k] = rowOf(entry.first + k, group);
        }
        bicubicKernels<Sample>().vertical(destinationLine<Sample>(group), lineRows_.get(),
                                          sourceLines_.weights.get() + entry.weights, entry.count,
                                          width * static_cast<size_t>(group.channels));
        finishDestinationLine(group);
    }
}

}  // namespace vorn
