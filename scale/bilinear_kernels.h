// Line kernels of the bilinear method.
//
// A source position has kBilinearBits<Sample> fraction bits. Between two source lines the samples
// made of one line are cut to whole sample values before the lines are weighed; a destination line
// that falls on one source line is rounded once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "scale/packed_lines.h"

namespace vorn {

// So that every product of a sample and a weight fits 32 bits.
template <class Sample>
inline constexpr unsigned kBilinearBits = sizeof(Sample) == 1 ? 16 : 15;

template <class Sample>
struct BilinearKernels {
    // Makes `count` pixels of one source line. One form for each number of channels in a group.
    // `cut` cuts to whole sample values, `rounded` rounds half up.
    using Row = void (*)(Sample* out,
                         const Sample* line,
                         const uint32_t* positions,
                         int32_t count,
                         int32_t lineWidth);
    Row cut[kMaxGroupChannels + 1];
    Row rounded[kMaxGroupChannels + 1];

    // Weighs two rows of `count` samples: the lower one with `lowerWeight`, above 0 and below one
    // unit, the upper one with the rest; rounds half up.
    void (*blend)(
        Sample* out, const Sample* upper, const Sample* lower, size_t count, uint32_t lowerWeight);
};

template <class Sample>
const BilinearKernels<Sample>& plainBilinearKernels();

// The plain kernels, or faster ones with the same results.
template <class Sample>
const BilinearKernels<Sample>& bilinearKernels();

}  // namespace vorn
