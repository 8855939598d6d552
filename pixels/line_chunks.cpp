#include "pixels/line_chunks.h"

#include <cstring>

#include "pixels/line_kernels.h"
#include "pixels/line_view.h"

namespace vorn {

ChunkedLine::ChunkedLine(const VORN_ChunkyBuffer& buffer, int32_t line, int32_t channels)
    : channels_(channels), sampleSize_(buffer.bytesPerChannel == 2 ? 2 : 1) {
    for (int32_t c = 0; c < channels; c++) {
        if (isPresent(buffer, c)) {
            start_[c] = lineStart(buffer, c, line);
            step_[c] = buffer.pixelStep[c];
        }
    }
}

void ChunkedLine::fillAbsent(AbsentColor kind) {
    for (int32_t c = 0; c < channels_; c++) {
        if (start_[c] == nullptr) {
            const bool middle = kind == AbsentColor::MiddleChroma && c > 0;
            std::memset(space_[c], middle ? 0x80 : 0, sizeof(space_[c]));
        }
    }
}

void ChunkedLine::open(int32_t first, int32_t count) {
    first_ = first;
    count_ = count;
    for (int32_t c = 0; c < channels_; c++) {
        row_[c] = inPlace(c) ? sampleAt(c) : space_[c];
    }
}

void ChunkedLine::gather() {
    const uint32_t sizes = sizeFlagsOf(sampleSize_, sampleSize_);
    for (int32_t c = 0; c < channels_; c++) {
        if (start_[c] != nullptr && !inPlace(c)) {
            copyKernelFor(sizes, step_[c], sampleSize_)(sampleAt(c), step_[c], row_[c], sampleSize_,
                                                        count_);
        }
    }
}

void ChunkedLine::scatter() {
    const uint32_t sizes = sizeFlagsOf(sampleSize_, sampleSize_);
    for (int32_t c = 0; c < channels_; c++) {
        if (start_[c] != nullptr && !inPlace(c)) {
            copyKernelFor(sizes, sampleSize_, step_[c])(row_[c], sampleSize_, sampleAt(c), step_[c],
                                                        count_);
        }
    }
}

uint8_t* ChunkedLine::sampleAt(int32_t channel) const {
    return start_[channel] + first_ * step_[channel];
}

bool ChunkedLine::inPlace(int32_t channel) const {
    return start_[channel] != nullptr && step_[channel] == sampleSize_;
}

}  // namespace vorn
