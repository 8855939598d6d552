#include "pixels/line_chunks.h"

#include <cstring>

#include "pixels/line_kernels.h"
#include "pixels/line_view.h"

namespace vorn {

ChunkedLine::ChunkedLine(Side side, const VORN_ChunkyBuffer& buffer, int32_t line, int32_t channels)
    : channels_(channels),
      sampleSize_(buffer.bytesPerChannel == 2 ? 2 : 1),
      mover_(sizeFlagsOf(sampleSize_, sampleSize_)) {
    for (int32_t c = 0; c < channels; c++) {
        row_[c] = space_[c];
        if (!isPresent(buffer, c)) continue;
        start_[c] = lineStart(buffer, c, line);
        step_[c] = buffer.pixelStep[c];
        if (inPlace(c)) continue;
        mover_.add(side == Source ? ChannelMove{start_[c], step_[c], space_[c], sampleSize_}
                                  : ChannelMove{space_[c], sampleSize_, start_[c], step_[c]});
    }
    mover_.plan();
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
        if (inPlace(c)) row_[c] = start_[c] + first_ * step_[c];
    }
}

void ChunkedLine::gather() { mover_.move(first_, 0, count_); }

void ChunkedLine::scatter() { mover_.move(0, first_, count_); }

bool ChunkedLine::inPlace(int32_t channel) const {
    return start_[channel] != nullptr && step_[channel] == sampleSize_;
}

}  // namespace vorn
