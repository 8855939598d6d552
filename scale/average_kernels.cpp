#include "scale/average_kernels.h"

#include <algorithm>

#include "support/cpu.h"
#if defined(VORN_X86)
#include "scale/x86/kernels.h"
#endif

namespace vorn {
namespace {

template <class Sample>
void addLines(uint32_t* sums, const WeightedLines<Sample>& lines, bool start, size_t count) {
    if (start) std::fill_n(sums, count, 0u);
    for (int32_t k = 0; k < lines.count; ++k) {
        const Sample* line = lines.lines[k];
        const uint32_t weight = lines.weights[k];
        for (size_t i = 0; i < count; ++i) sums[i] += line[i] * weight;
    }
}

template <class Sample, class Total, int kChannels>
void finish(Sample* out,
            const uint32_t* sums,
            const AreaTable& samples,
            int32_t width,
            unsigned totalShift) {
    const Total half = (Total{1} << totalShift) >> 1;
    for (int32_t x = 0; x < width; ++x, out += kChannels) {
        const AreaSpan& span = samples.spans.get()[x];
        const uint32_t* sum = sums + static_cast<ptrdiff_t>(span.first) * kChannels;
        const uint32_t* weight = samples.weights.get() + span.weights;
        Total total[kChannels] = {};
        for (int32_t k = 0; k < span.count; ++k, ++weight, sum += kChannels) {
            for (int c = 0; c < kChannels; ++c) total[c] += Total{sum[c]} * *weight;
        }
        for (int c = 0; c < kChannels; ++c) {
            out[c] = static_cast<Sample>((total[c] + half) >> totalShift);
        }
    }
}

template <class Sample, class Narrow>
constexpr AverageKernels<Sample> kPlain = {
    addLines<Sample>,
    {nullptr, finish<Sample, Narrow, 1>, nullptr, finish<Sample, Narrow, 3>,
     finish<Sample, Narrow, 4>},
    {nullptr, finish<Sample, uint64_t, 1>, nullptr, finish<Sample, uint64_t, 3>,
     finish<Sample, uint64_t, 4>}};

}  // namespace

template <>
const AverageKernels<uint8_t>& plainAverageKernels() {
    return kPlain<uint8_t, uint32_t>;
}

// 16-bit samples always need the wide form: their narrow form is the same.
template <>
const AverageKernels<uint16_t>& plainAverageKernels() {
    return kPlain<uint16_t, uint64_t>;
}

template <class Sample>
const AverageKernels<Sample>& averageKernels() {
#if defined(VORN_X86)
    return chooseKernels<AverageKernels<Sample>>(plainAverageKernels<Sample>(), x86::overwrite);
#else
    return plainAverageKernels<Sample>();
#endif
}

template const AverageKernels<uint8_t>& averageKernels();
template const AverageKernels<uint16_t>& averageKernels();

}  // namespace vorn
