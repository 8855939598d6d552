#include "scale/x86/kernels.h"
#include "support/x86/avx2.h"

namespace vorn::x86 {
namespace {

// upper + ((lower - upper) * weight + half) / 65536. A weight of half a unit or more doesn't fit 16
// signed bits: it is taken one unit too low, which the difference itself makes good.
VORN_AVX2 void blend8(
    uint8_t* out, const uint8_t* upper, const uint8_t* lower, size_t count, uint32_t lowerWeight) {
    const __m256i weight = _mm256_set1_epi16(static_cast<int16_t>(lowerWeight));
    const __m256i whole = _mm256_set1_epi16(lowerWeight >= 32768 ? -1 : 0);
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i a = _mm256_cvtepu8_epi16(load128(upper + i));
        const __m256i d = _mm256_sub_epi16(_mm256_cvtepu8_epi16(load128(lower + i)), a);
        const __m256i high = _mm256_mulhi_epi16(d, weight);
        const __m256i carry = _mm256_srli_epi16(_mm256_mullo_epi16(d, weight), 15);
        const __m256i base = _mm256_add_epi16(a, _mm256_and_si256(d, whole));
        const __m256i sum = _mm256_add_epi16(base, _mm256_add_epi16(high, carry));
        store128(out + i,
                 _mm_packus_epi16(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1)));
    }
    plainBilinearKernels<uint8_t>().blend(out + i, upper + i, lower + i, count - i, lowerWeight);
}

VORN_AVX2 void blend16(uint16_t* out,
                       const uint16_t* upper,
                       const uint16_t* lower,
                       size_t count,
                       uint32_t lowerWeight) {
    const __m256i weight = _mm256_set1_epi32(static_cast<int32_t>(lowerWeight));
    const __m256i half = _mm256_set1_epi32(16384);
    size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const __m256i a = _mm256_cvtepu16_epi32(load128(upper + i));
        const __m256i d = _mm256_sub_epi32(_mm256_cvtepu16_epi32(load128(lower + i)), a);
        const __m256i part = _mm256_add_epi32(_mm256_mullo_epi32(d, weight), half);
        const __m256i sum = _mm256_add_epi32(a, _mm256_srai_epi32(part, 15));
        store128(out + i,
                 _mm_packus_epi32(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1)));
    }
    plainBilinearKernels<uint16_t>().blend(out + i, upper + i, lower + i, count - i, lowerWeight);
}

// The pixel at the left of a position and the one behind it lie within eight bytes.
template <int kChannels>
VORN_AVX2 inline __m128i pixelPair(const uint8_t* line, uint32_t position) {
    return load64(line + static_cast<size_t>(position >> 16) * kChannels);
}

// How many of the positions, from the first on, have eight bytes of the line to read.
template <int kChannels>
VORN_AVX2 int32_t safePositions(const uint32_t* positions, int32_t count, int32_t lineWidth) {
    const int64_t bytes = int64_t{lineWidth} * kChannels;
    while (count > 0 && int64_t{positions[count - 1] >> 16} * kChannels + 8 > bytes) --count;
    return count;
}

// left + ((right - left) * weight + rounding) / 65536, two pixels at a time.
template <int kChannels, uint32_t kRounding>
VORN_AVX2 void makeRow(uint8_t* out,
                       const uint8_t* line,
                       const uint32_t* positions,
                       int32_t count,
                       int32_t lineWidth) {
    constexpr int8_t k = kChannels;
    const __m128i lefts = _mm_setr_epi8(0, 1, 2, k == 4 ? 3 : -1, 8, 9, 10, k == 4 ? 11 : -1, -1,
                                        -1, -1, -1, -1, -1, -1, -1);
    const __m128i rights = _mm_setr_epi8(k, k + 1, k + 2, k == 4 ? 7 : -1, k + 8, k + 9, k + 10,
                                         k == 4 ? 15 : -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i toPixels = _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1);
    const __m256i lowBytes = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i fraction = _mm256_set1_epi32(65535);
    const __m256i rounding = _mm256_set1_epi32(kRounding);
    const int32_t safe = safePositions<kChannels>(positions, count, lineWidth);
    int32_t i = 0;
    // The last store of three channels writes one byte more: a pixel must follow.
    for (; i + 3 <= safe; i += 2, out += 2 * kChannels) {
        const __m128i both = _mm_unpacklo_epi64(pixelPair<kChannels>(line, positions[i]),
                                                pixelPair<kChannels>(line, positions[i + 1]));
        const __m256i left = _mm256_cvtepu8_epi32(_mm_shuffle_epi8(both, lefts));
        const __m256i right = _mm256_cvtepu8_epi32(_mm_shuffle_epi8(both, rights));
        const __m256i weights = _mm256_and_si256(
            _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(load64(positions + i)), toPixels),
            fraction);
        __m256i part = _mm256_mullo_epi32(_mm256_sub_epi32(right, left), weights);
        part = _mm256_srai_epi32(_mm256_add_epi32(part, rounding), 16);
        const __m256i pixels = _mm256_shuffle_epi8(_mm256_add_epi32(left, part), lowBytes);
        store32(out, _mm256_castsi256_si128(pixels));
        store32(out + kChannels, _mm256_extracti128_si256(pixels, 1));
    }
    const BilinearKernels<uint8_t>& plain = plainBilinearKernels<uint8_t>();
    (kRounding == 0 ? plain.cut : plain.rounded)[kChannels](out, line, positions + i, count - i,
                                                            lineWidth);
}

}  // namespace

void overwrite(BilinearKernels<uint8_t>& kernels) {
    kernels.cut[3] = makeRow<3, 0>;
    kernels.cut[4] = makeRow<4, 0>;
    kernels.rounded[3] = makeRow<3, 32768>;
    kernels.rounded[4] = makeRow<4, 32768>;
    kernels.blend = blend8;
}

void overwrite(BilinearKernels<uint16_t>& kernels) { kernels.blend = blend16; }

}  // namespace vorn::x86
