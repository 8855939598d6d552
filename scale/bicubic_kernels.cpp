#include "scale/bicubic_kernels.h"

#include <algorithm>

#include "support/cpu.h"
#if defined(VORN_X86)
#include "scale/x86/kernels.h"
#endif

namespace vorn {
namespace {

template <class Sample, int kChannels>
void horizontal(int32_t* row, const Sample* line, const BicubicPlan& plan) {
    for (int32_t x = 0; x < plan.outSize; ++x, row += kChannels) {
        const Contribution& entry = plan.contributions.get()[x];
        const int16_t* weights = plan.weights.get() + entry.weights;
        const Sample* in = line + static_cast<ptrdiff_t>(entry.first) * kChannels;
        int32_t sum[kChannels] = {};
        for (int32_t k = 0; k < entry.count; ++k, in += kChannels) {
            for (int c = 0; c < kChannels; ++c) sum[c] += in[c] * weights[k];
        }
        for (int c = 0; c < kChannels; ++c) row[c] = bicubicRowValue<Sample>(sum[c]);
    }
}

template <class Sample>
void vertical(Sample* out,
              const int32_t* const* rows,
              const int16_t* weights,
              int32_t rowCount,
              size_t count) {
    constexpr int kShift = sizeof(Sample) == 1 ? 22 : 14;
    constexpr int32_t kLargest = sizeof(Sample) == 1 ? 255 : 65535;
    constexpr size_t kRun = 64;
    for (size_t begin = 0; begin < count; begin += kRun) {
        const size_t run = std::min(kRun, count - begin);
        int32_t sums[kRun] = {};
        for (int32_t k = 0; k < rowCount; ++k) {
            const int32_t* row = rows[k] + begin;
            for (size_t i = 0; i < run; ++i) sums[i] += row[i] * weights[k];
        }
        for (size_t i = 0; i < run; ++i) {
            out[begin + i] = static_cast<Sample>(std::clamp(sums[i] >> kShift, 0, kLargest));
        }
    }
}

template <class Sample>
constexpr BicubicKernels<Sample> kPlain = {
    {nullptr, horizontal<Sample, 1>, nullptr, horizontal<Sample, 3>, horizontal<Sample, 4>},
    vertical<Sample>,
    {}};

}  // namespace

template <class Sample>
const BicubicKernels<Sample>& plainBicubicKernels() {
    return kPlain<Sample>;
}

template const BicubicKernels<uint8_t>& plainBicubicKernels();
template const BicubicKernels<uint16_t>& plainBicubicKernels();

template <class Sample>
const BicubicKernels<Sample>& bicubicKernels() {
#if defined(VORN_X86)
    return chooseKernels<BicubicKernels<Sample>>(plainBicubicKernels<Sample>(), x86::overwrite);
#else
    return plainBicubicKernels<Sample>();
#endif
}

template const BicubicKernels<uint8_t>& bicubicKernels();
template const BicubicKernels<uint16_t>& bicubicKernels();

}  // namespace vorn
