#include "scale/bilinear_scaler.h"

#include "scale/bilinear_kernels.h"

namespace vorn {
namespace {

// floor(i * (n - 1) * unit / (m - 1)) for every i below m.
Owned<uint32_t> positionTable(int32_t n, int32_t m, unsigned bits) {
    Owned<uint32_t> positions(
        static_cast<uint32_t*>(AllocMemory(static_cast<size_t>(m) * sizeof(uint32_t), 0)));
    if (!positions) return positions;
    const int64_t last = int64_t{n - 1} << bits;
    positions.get()[0] = 0;
    for (int32_t i = 1; i < m; ++i) {
        positions.get()[i] = static_cast<uint32_t>(i * last / (m - 1));
    }
    return positions;
}

}  // namespace

bool BilinearScaler::prepare() {
    nextLine_ = currentLine_ = 0;
    keptLines_[0] = keptLines_[1] = -1;
    const unsigned bits = bytes_ == 1 ? kBilinearBits<uint8_t> : kBilinearBits<uint16_t>;
    samplePositions_ = positionTable(srcWidth_, dstWidth_, bits);
    linePositions_ = positionTable(srcLines_, dstLines_, bits);
    const size_t row = static_cast<size_t>(dstWidth_) * lines_.channels();
    rows_.reset(static_cast<uint8_t*>(AllocMemory(2 * row * static_cast<size_t>(bytes_), 0)));
    return samplePositions_ && linePositions_ && rows_;
}

void BilinearScaler::release() {
    samplePositions_.reset();
    linePositions_.reset();
    rows_.reset();
}

// Stops at the last source line that the destination line needs; it stays at the ring's read side.
// The line before, if it is needed too, was kept as a row.
bool BilinearScaler::takeLines() {
    const unsigned bits = bytes_ == 1 ? kBilinearBits<uint8_t> : kBilinearBits<uint16_t>;
    const uint32_t position = linePositions_.get()[nextLine_];
    const auto upper = static_cast<int32_t>(position >> bits);
    const bool between = position % (1u << bits) != 0;
    const int32_t last = between ? upper + 1 : upper;
    while (!sourceRing_.empty()) {
        if (between && currentLine_ >= upper) keepCurrentLine();
        if (currentLine_ == last) return true;
        sourceRing_.take();
        ++currentLine_;
    }
    return false;
}

uint8_t* BilinearScaler::keptRow(int32_t line, const ChannelGroup& group) const {
    const auto width = static_cast<size_t>(dstWidth_);
    const size_t slot = line % 2 == 0 ? 0 : lines_.channels();
    return rows_.get() +
           (slot + static_cast<size_t>(group.before)) * width * static_cast<size_t>(bytes_);
}

void BilinearScaler::keepCurrentLine() {
    int32_t& kept = keptLines_[currentLine_ % 2];
    if (kept == currentLine_) return;
    kept = currentLine_;
    if (bytes_ == 1) {
        makeRows<uint8_t>();
    } else {
        makeRows<uint16_t>();
    }
}

template <class Sample>
void BilinearScaler::makeRows() {
    for (const ChannelGroup& group : lines_.groups()) {
        bilinearKernels<Sample>().cut[group.channels](
            reinterpret_cast<Sample*>(keptRow(currentLine_, group)), sourceLine<Sample>(group),
            samplePositions_.get(), dstWidth_, srcWidth_);
    }
}

void BilinearScaler::makeLine() {
    if (bytes_ == 1) {
        makeLineOf<uint8_t>();
    } else {
        makeLineOf<uint16_t>();
    }
    ++nextLine_;
}

template <class Sample>
void BilinearScaler::makeLineOf() {
    const BilinearKernels<Sample>& kernels = bilinearKernels<Sample>();
    const uint32_t lowerWeight = linePositions_.get()[nextLine_] % (1u << kBilinearBits<Sample>);
    const auto width = static_cast<size_t>(dstWidth_);
    for (const ChannelGroup& group : lines_.groups()) {
        Sample* out = destinationLine<Sample>(group);
        if (lowerWeight == 0) {
            kernels.rounded[group.channels](out, sourceLine<Sample>(group), samplePositions_.get(),
                                            dstWidth_, srcWidth_);
        } else {
            kernels.blend(out, reinterpret_cast<Sample*>(keptRow(currentLine_ - 1, group)),
                          reinterpret_cast<Sample*>(keptRow(currentLine_, group)),
                          width * static_cast<size_t>(group.channels), lowerWeight);
        }
        finishDestinationLine(group);
    }
}

}  // namespace vorn
