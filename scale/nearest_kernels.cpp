#include "scale/nearest_kernels.h"

#include <cstring>

namespace vorn {
namespace {

template <class Sample, int kChannels>
void copy(Sample* out, const Sample* in, const uint16_t* steps, int32_t count) {
    for (int32_t i = 0; i < count; ++i, out += kChannels) {
        in += static_cast<ptrdiff_t>(steps[i]) * kChannels;
        std::memcpy(out, in, kChannels * sizeof(Sample));
    }
}

template <class Sample>
constexpr NearestKernels<Sample> kPlain = {
    {nullptr, copy<Sample, 1>, nullptr, copy<Sample, 3>, copy<Sample, 4>}};

}  // namespace

template <class Sample>
const NearestKernels<Sample>& nearestKernels() {
    return kPlain<Sample>;
}

template const NearestKernels<uint8_t>& nearestKernels<uint8_t>();
template const NearestKernels<uint16_t>& nearestKernels<uint16_t>();

}  // namespace vorn
