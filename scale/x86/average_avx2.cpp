#include "scale/x86/avx2.h"
#include "scale/x86/kernels.h"

namespace vorn::x86 {
namespace {

// Eight samples as 32-bit numbers.
VORN_AVX2 inline __m256i widen(const uint8_t* samples) {
    return _mm256_cvtepu8_epi32(load64(samples));
}
VORN_AVX2 inline __m256i widen(const uint16_t* samples) {
    return _mm256_cvtepu16_epi32(load128(samples));
}

template <class Sample>
VORN_AVX2 void startSums(uint32_t* sums, const Sample* line, size_t count, uint32_t weight) {
    const __m256i factor = _mm256_set1_epi32(static_cast<int32_t>(weight));
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        store256(sums + i, _mm256_mullo_epi32(widen(line + i), factor));
    }
    plainAverageKernels<Sample>().startSums(sums + i, line + i, count - i, weight);
}

template <class Sample>
VORN_AVX2 void addToSums(uint32_t* sums, const Sample* line, size_t count, uint32_t weight) {
    const __m256i factor = _mm256_set1_epi32(static_cast<int32_t>(weight));
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i product = _mm256_mullo_epi32(widen(line + i), factor);
        store256(sums + i, _mm256_add_epi32(load256(sums + i), product));
    }
    plainAverageKernels<Sample>().addToSums(sums + i, line + i, count - i, weight);
}

// Four sums at a time: of three channels, the fourth is the next pixel's and is left out.
template <int kChannels>
VORN_AVX2 void finish(
    uint8_t* out, const uint32_t* sums, const Piece* piece, int32_t width, unsigned totalShift) {
    const auto half = static_cast<int32_t>((uint32_t{1} << totalShift) >> 1);
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int32_t>(totalShift));
    const __m128i lowBytes =
        _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    for (int32_t x = 0; x < width; ++x, out += kChannels) {
        __m128i total = _mm_set1_epi32(half);
        for (bool last = false; !last; ++piece) {
            const __m128i weight = _mm_set1_epi32(static_cast<int32_t>(piece->weight));
            total = _mm_add_epi32(total, _mm_mullo_epi32(load128(sums), weight));
            if (piece->endsSource) sums += kChannels;
            last = piece->endsDestination;
        }
        total = _mm_shuffle_epi8(_mm_srl_epi32(total, shift), lowBytes);
        if (kChannels == 4 || x + 1 < width) {
            store32(out, total);
        } else {
            const int32_t pixel = _mm_cvtsi128_si32(total);
            std::memcpy(out, &pixel, kChannels);
        }
    }
}

}  // namespace

void overwrite(AverageKernels<uint8_t>& kernels) {
    kernels.startSums = startSums<uint8_t>;
    kernels.addToSums = addToSums<uint8_t>;
    kernels.finishNarrow[3] = finish<3>;
    kernels.finishNarrow[4] = finish<4>;
}

void overwrite(AverageKernels<uint16_t>& kernels) {
    kernels.startSums = startSums<uint16_t>;
    kernels.addToSums = addToSums<uint16_t>;
}

}  // namespace vorn::x86
