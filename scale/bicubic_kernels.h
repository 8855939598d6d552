// Line kernels of the cubic filter.
//
// Source lines are filtered to rows of the destination's width. A row holds values of a 16-bit
// scale in 32 bits: the filter's negative lobes push some of them slightly outside.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scale/bicubic_plan.h"
#include "scale/packed_lines.h"

namespace vorn {

template <class Sample>
struct BicubicKernels {
    static constexpr int32_t kMostLines = 4;

    // Filters a line of plan.inSize pixels to plan.outSize pixels. One form for each number of
    // channels in a group.
    using Horizontal = void (*)(int32_t* row, const Sample* line, const BicubicPlan& plan);
    Horizontal horizontal[kMaxGroupChannels + 1];

    // Weighs `rowCount` rows of `count` values each; cuts and clamps to samples.
    void (*vertical)(Sample* out,
                     const int32_t* const* rows,
                     const int16_t* weights,
                     int32_t rowCount,
                     size_t count);

    // Makes as many lines as the index says at once, `lineStep` samples apart, from the same four
    // rows. Each line has weights of its own, one behind the other. Some are null.
    void (*fourRows[kMostLines + 1])(Sample* out,
                                     ptrdiff_t lineStep,
                                     const int32_t* const* rows,
                                     const int16_t* weights,
                                     size_t count);
};

// A weighted sum of samples on the rows' scale. 8-bit samples are widened by repeating them.
template <class Sample>
inline int32_t bicubicRowValue(int32_t sum) {
    if constexpr (sizeof(Sample) == 1) {
        const int32_t value = sum >> 6;
        return value + (value >> 8);
    } else {
        return sum >> 14;
    }
}

template <class Sample>
const BicubicKernels<Sample>& plainBicubicKernels();

// The plain kernels, or faster ones with the same results.
template <class Sample>
const BicubicKernels<Sample>& bicubicKernels();

}  // namespace vorn
