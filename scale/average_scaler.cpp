#include "scale/average_scaler.h"

#include "scale/average_kernels.h"

namespace vorn {

bool AverageScaler::prepare() {
    if (!samplePieces_.build(srcWidth_, dstWidth_) || !linePieces_.build(srcLines_, dstLines_)) {
        return false;
    }
    // One more than are used: kernels load four sums at a time, also where they want three.
    const size_t sums = static_cast<size_t>(srcWidth_) * lines_.channels() + 1;
    sums_.reset(static_cast<uint32_t*>(AllocMemory(sums * sizeof(uint32_t), 0)));
    nextPiece_ = linePieces_.pieces.get();
    lineBegun_ = lineComplete_ = false;
    return sums_ != nullptr;
}

void AverageScaler::release() {
    samplePieces_.pieces.reset();
    linePieces_.pieces.reset();
    sums_.reset();
}

uint32_t* AverageScaler::sumsOf(const ChannelGroup& group) const {
    return sums_.get() + static_cast<size_t>(group.before) * static_cast<size_t>(srcWidth_);
}

// A source line that goes on into the next destination line stays at the ring's read side.
bool AverageScaler::takeLines() {
    while (!lineComplete_) {
        if (sourceRing_.empty()) return false;
        const Piece& piece = *nextPiece_++;
        if (bytes_ == 1) {
            addLine<uint8_t>(piece.weight);
        } else {
            addLine<uint16_t>(piece.weight);
        }
        lineBegun_ = true;
        lineComplete_ = piece.endsDestination;
        if (piece.endsSource) sourceRing_.take();
    }
    return true;
}

template <class Sample>
void AverageScaler::addLine(uint32_t weight) {
    const AverageKernels<Sample>& kernels = averageKernels<Sample>();
    const auto add = lineBegun_ ? kernels.addToSums : kernels.startSums;
    for (const ChannelGroup& group : lines_.groups()) {
        const size_t samples = static_cast<size_t>(srcWidth_) * static_cast<size_t>(group.channels);
        add(sumsOf(group), sourceLine<Sample>(group), samples, weight);
    }
}

void AverageScaler::makeLine() {
    if (bytes_ == 1) {
        finishLine<uint8_t>();
    } else {
        finishLine<uint16_t>();
    }
    lineBegun_ = lineComplete_ = false;
}

template <class Sample>
void AverageScaler::finishLine() {
    const unsigned totalShift = samplePieces_.shift + linePieces_.shift;
    const AverageKernels<Sample>& kernels = averageKernels<Sample>();
    const auto& forms =
        sizeof(Sample) == 1 && totalShift <= 24 ? kernels.finishNarrow : kernels.finishWide;
    for (const ChannelGroup& group : lines_.groups()) {
        forms[group.channels](destinationLine<Sample>(group), sumsOf(group),
                              samplePieces_.pieces.get(), dstWidth_, totalShift);
        finishDestinationLine(group);
    }
}

}  // namespace vorn
