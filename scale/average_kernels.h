// Line kernels of the averaging method.
//
// Source lines are first added up, each with its line weight, into one sum for every source sample;
// the sums of a destination line are then added up with the sample weights and rounded once. All
// sums are exact: a line sum is at most the largest sample times 2^16, which 32 bits hold.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scale/area_table.h"
#include "scale/packed_lines.h"

namespace vorn {

// Some neighbouring source lines and their weights.
template <class Sample>
struct WeightedLines {
    static constexpr int32_t kMost = 8;
    const Sample* lines[kMost];
    uint32_t weights[kMost];
    int32_t count = 0;
};

template <class Sample>
struct AverageKernels {
    // Adds `count` samples of each line, times the line's weight, to the sums. When `start` is
    // given, the sums begin at 0.
    void (*addLines)(uint32_t* sums, const WeightedLines<Sample>& lines, bool start, size_t count);

    // Makes `width` destination pixels from the sums of the source pixels. `totalShift` is the
    // shift of both weights together. One form for each number of channels in a group; the narrow
    // one adds up in 32 bits.
    using Finish = void (*)(Sample* out,
                            const uint32_t* sums,
                            const AreaTable& samples,
                            int32_t width,
                            unsigned totalShift);
    Finish finishNarrow[kMaxGroupChannels + 1];
    Finish finishWide[kMaxGroupChannels + 1];
};

template <class Sample>
const AverageKernels<Sample>& plainAverageKernels();

// The plain kernels, or faster ones with the same results.
template <class Sample>
const AverageKernels<Sample>& averageKernels();

}  // namespace vorn
