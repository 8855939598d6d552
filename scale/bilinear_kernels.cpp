#include "scale/bilinear_kernels.h"

#include "support/cpu.h"
#if defined(VORN_X86)
#include "scale/x86/kernels.h"
#endif

namespace vorn {
namespace {

// A sample whose weight is 0 isn't read: it may lie behind the line's last.
template <class Sample, int kChannels, uint32_t kRounding>
void makeRow(Sample* out, const Sample* line, const uint32_t* positions, int32_t count, int32_t) {
    constexpr unsigned kBits = kBilinearBits<Sample>;
    constexpr uint32_t kUnit = 1u << kBits;
    for (int32_t i = 0; i < count; ++i, out += kChannels) {
        const Sample* left = line + static_cast<size_t>(positions[i] >> kBits) * kChannels;
        const uint32_t weight = positions[i] % kUnit;
        const Sample* right = weight == 0 ? left : left + kChannels;
        for (int c = 0; c < kChannels; ++c) {
            const uint32_t sum = left[c] * (kUnit - weight) + right[c] * weight;
            out[c] = static_cast<Sample>((sum + kRounding) >> kBits);
        }
    }
}

template <class Sample>
void blend(
    Sample* out, const Sample* upper, const Sample* lower, size_t count, uint32_t lowerWeight) {
    constexpr unsigned kBits = kBilinearBits<Sample>;
    const uint32_t upperWeight = (1u << kBits) - lowerWeight;
    for (size_t i = 0; i < count; ++i) {
        const uint32_t sum = upper[i] * upperWeight + lower[i] * lowerWeight;
        out[i] = static_cast<Sample>((sum + (1u << (kBits - 1))) >> kBits);
    }
}

template <class Sample>
constexpr uint32_t kHalf = 1u << (kBilinearBits<Sample> - 1);

template <class Sample>
constexpr BilinearKernels<Sample> kPlain = {
    {nullptr, makeRow<Sample, 1, 0>, nullptr, makeRow<Sample, 3, 0>, makeRow<Sample, 4, 0>},
    {nullptr, makeRow<Sample, 1, kHalf<Sample>>, nullptr, makeRow<Sample, 3, kHalf<Sample>>,
     makeRow<Sample, 4, kHalf<Sample>>},
    blend<Sample>};

}  // namespace

template <class Sample>
const BilinearKernels<Sample>& plainBilinearKernels() {
    return kPlain<Sample>;
}

template const BilinearKernels<uint8_t>& plainBilinearKernels();
template const BilinearKernels<uint16_t>& plainBilinearKernels();

template <class Sample>
const BilinearKernels<Sample>& bilinearKernels() {
#if defined(VORN_X86)
    return chooseKernels<BilinearKernels<Sample>>(plainBilinearKernels<Sample>(), x86::overwrite);
#else
    return plainBilinearKernels<Sample>();
#endif
}

template const BilinearKernels<uint8_t>& bilinearKernels();
template const BilinearKernels<uint16_t>& bilinearKernels();

}  // namespace vorn
