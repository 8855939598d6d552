#include "scale/average_kernels.h"

#include "scale/cpu.h"
#if defined(VORN_SCALE_X86)
#include "scale/x86/kernels.h"
#endif

namespace vorn {
namespace {

template <class Sample>
void startSums(uint32_t* sums, const Sample* line, size_t count, uint32_t weight) {
    for (size_t i = 0; i < count; ++i) sums[i] = line[i] * weight;
}

template <class Sample>
void addToSums(uint32_t* sums, const Sample* line, size_t count, uint32_t weight) {
    for (size_t i = 0; i < count; ++i) sums[i] += line[i] * weight;
}

template <class Sample, class Total, int kChannels>
void finish(
    Sample* out, const uint32_t* sums, const Piece* piece, int32_t width, unsigned totalShift) {
    const Total half = (Total{1} << totalShift) >> 1;
    for (int32_t x = 0; x < width; ++x, out += kChannels) {
        Total total[kChannels] = {};
        for (bool last = false; !last; ++piece) {
            for (int c = 0; c < kChannels; ++c) total[c] += Total{sums[c]} * piece->weight;
            if (piece->endsSource) sums += kChannels;
            last = piece->endsDestination;
        }
        for (int c = 0; c < kChannels; ++c) {
            out[c] = static_cast<Sample>((total[c] + half) >> totalShift);
        }
    }
}

template <class Sample, class Narrow>
constexpr AverageKernels<Sample> kPlain = {
    startSums<Sample>,
    addToSums<Sample>,
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
#if defined(VORN_SCALE_X86)
    return chooseKernels<AverageKernels<Sample>>(plainAverageKernels<Sample>(), x86::overwrite);
#else
    return plainAverageKernels<Sample>();
#endif
}

template const AverageKernels<uint8_t>& averageKernels();
template const AverageKernels<uint16_t>& averageKernels();

}  // namespace vorn
