// Line kernels of the nearest-sample method.
#pragma once

#include <cstdint>

#include "scale/packed_lines.h"

namespace vorn {

template <class Sample>
struct NearestKernels {
    // Copies `count` pixels, each from steps[i] pixels further on in the source line than the one
    // before. One form for each number of channels in a group.
    using Copy = void (*)(Sample* out, const Sample* in, const uint16_t* steps, int32_t count);
    Copy copy[kMaxGroupChannels + 1];
};

template <class Sample>
const NearestKernels<Sample>& nearestKernels();

}  // namespace vorn
