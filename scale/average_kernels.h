// Line kernels of the averaging method.
//
// Source lines are first added up, each with its line weight, into one sum for every source sample;
// the sums of a destination line are then added up with the sample weights and rounded once. All
// sums are exact: a line sum is at most the largest sample times 2^16, which 32 bits hold.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scale/packed_lines.h"
#include "scale/piece_table.h"

namespace vorn {

template <class Sample>
struct AverageKernels {
    // sums[i] = line[i] * weight
    void (*startSums)(uint32_t* sums, const Sample* line, size_t count, uint32_t weight);
    // sums[i] += line[i] * weight
    void (*addToSums)(uint32_t* sums, const Sample* line, size_t count, uint32_t weight);

    // Makes `width` destination pixels from the sums of the source pixels. `totalShift` is the
    // shift of both weights together. One form for each number of channels in a group; the narrow
    // one adds up in 32 bits.
    using Finish = void (*)(
        Sample* out, const uint32_t* sums, const Piece* pieces, int32_t width, unsigned totalShift);
    Finish finishNarrow[kMaxGroupChannels + 1];
    Finish finishWide[kMaxGroupChannels + 1];
};

template <class Sample>
const AverageKernels<Sample>& plainAverageKernels();

// The plain kernels, or faster ones with the same results.
template <class Sample>
const AverageKernels<Sample>& averageKernels();

}  // namespace vorn
