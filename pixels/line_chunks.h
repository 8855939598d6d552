// Lines taken apart into short runs of channels whose samples lie side by side, which is what the
// conversion loops work on. Channels that lie so already are used in place.
#pragma once

#include <vorn/types.h>

#include "pixels/channel_mover.h"

namespace vorn {

inline constexpr int32_t kChunkSamples = 512;

// What an absent source channel counts as.
enum class AbsentColor { Zero, MiddleChroma };

class ChunkedLine {
  public:
    enum Side { Source, Destination };

    // Channels 0 to `channels` - 1 of a line.
    ChunkedLine(Side side, const VORN_ChunkyBuffer& buffer, int32_t line, int32_t channels);
    ChunkedLine(const ChunkedLine&) = delete;
    ChunkedLine& operator=(const ChunkedLine&) = delete;

    // Fills the rows of absent channels: zero, or for channels 1 and 2 the middle of chroma.
    void fillAbsent(AbsentColor kind);

    // Points the rows at `count` samples from `first` on.
    void open(int32_t first, int32_t count);
    void gather();   // a source: brings the samples in
    void scatter();  // a destination: puts them back

    uint8_t* const* rows() const { return row_; }

  private:
    bool inPlace(int32_t channel) const;

    int32_t channels_;
    int32_t sampleSize_;
    ChannelMover mover_;
    int32_t first_ = 0;
    int32_t count_ = 0;
    uint8_t* start_[3] = {};  // null: absent
    ptrdiff_t step_[3] = {};
    uint8_t* row_[3] = {};
    alignas(64) uint8_t space_[3][kChunkSamples * 2];
};

}  // namespace vorn
