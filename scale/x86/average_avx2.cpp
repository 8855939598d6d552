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

// Any weights: sixteen sums at a time.
template <class Sample>
VORN_AVX2 void addLines(uint32_t* sums,
                        const WeightedLines<Sample>& lines,
                        bool start,
                        size_t count) {
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        __m256i low = start ? _mm256_setzero_si256() : load256(sums + i);
        __m256i high = start ? _mm256_setzero_si256() : load256(sums + i + 8);
        for (int32_t k = 0; k < lines.count; ++k) {
            const __m256i weight = _mm256_set1_epi32(static_cast<int32_t>(lines.weights[k]));
            const Sample* in = lines.lines[k] + i;
            low = _mm256_add_epi32(low, _mm256_mullo_epi32(widen(in), weight));
            high = _mm256_add_epi32(high, _mm256_mullo_epi32(widen(in + 8), weight));
        }
        store256(sums + i, low);
        store256(sums + i + 8, high);
    }
    WeightedLines<Sample> rest = lines;
    for (int32_t k = 0; k < rest.count; ++k) rest.lines[k] += i;
    plainAverageKernels<Sample>().addLines(sums + i, rest, start, count - i);
}

// Two lines at a time, as pairs of bytes that are multiplied and added up at once: the weights must
// fit 15 bits. A line without a partner is paired with itself, at weight 0.
struct LinePairs {
    const uint8_t* upper[WeightedLines<uint8_t>::kMost / 2];
    const uint8_t* lower[WeightedLines<uint8_t>::kMost / 2];
    __m256i weights[WeightedLines<uint8_t>::kMost / 2];
    int32_t count = 0;
};

VORN_AVX2 inline LinePairs pairsOf(const WeightedLines<uint8_t>& lines) {
    LinePairs pairs;
    for (int32_t k = 0; k < lines.count; k += 2, ++pairs.count) {
        const bool alone = k + 1 == lines.count;
        const uint32_t lowerWeight = alone ? 0 : lines.weights[k + 1];
        pairs.upper[pairs.count] = lines.lines[k];
        pairs.lower[pairs.count] = lines.lines[alone ? k : k + 1];
        pairs.weights[pairs.count] =
            _mm256_set1_epi32(static_cast<int32_t>(lines.weights[k] | lowerWeight << 16));
    }
    return pairs;
}

VORN_AVX2 void addLinePairs(uint32_t* sums,
                            const WeightedLines<uint8_t>& lines,
                            bool start,
                            size_t count) {
    for (int32_t k = 0; k < lines.count; ++k) {
        if (lines.weights[k] > 32767) return addLines<uint8_t>(sums, lines, start, count);
    }
    const LinePairs pairs = pairsOf(lines);
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        __m256i low = start ? _mm256_setzero_si256() : load256(sums + i);
        __m256i high = start ? _mm256_setzero_si256() : load256(sums + i + 8);
        for (int32_t k = 0; k < pairs.count; ++k) {
            const __m128i a = load128(pairs.upper[k] + i);
            const __m128i b = load128(pairs.lower[k] + i);
            const __m256i first = _mm256_cvtepu8_epi16(_mm_unpacklo_epi8(a, b));
            const __m256i second = _mm256_cvtepu8_epi16(_mm_unpackhi_epi8(a, b));
            low = _mm256_add_epi32(low, _mm256_madd_epi16(first, pairs.weights[k]));
            high = _mm256_add_epi32(high, _mm256_madd_epi16(second, pairs.weights[k]));
        }
        store256(sums + i, low);
        store256(sums + i + 8, high);
    }
    WeightedLines<uint8_t> rest = lines;
    for (int32_t k = 0; k < rest.count; ++k) rest.lines[k] += i;
    plainAverageKernels<uint8_t>().addLines(sums + i, rest, start, count - i);
}

// Four sums at a time: of three channels, the fourth is the next pixel's and is left out.
template <int kChannels>
VORN_AVX2 void finish(uint8_t* out,
                      const uint32_t* sums,
                      const AreaTable& samples,
                      int32_t width,
                      unsigned totalShift) {
    const auto half = static_cast<int32_t>((uint32_t{1} << totalShift) >> 1);
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int32_t>(totalShift));
    const __m128i lowBytes =
        _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const uint32_t* weight = samples.weights.get();
    for (int32_t x = 0; x < width; ++x, out += kChannels) {
        const AreaSpan& span = samples.spans.get()[x];
        const uint32_t* sum = sums + static_cast<ptrdiff_t>(span.first) * kChannels;
        __m128i total = _mm_set1_epi32(half);
        for (int32_t k = 0; k < span.count; ++k, ++weight, sum += kChannels) {
            const __m128i factor = _mm_set1_epi32(static_cast<int32_t>(*weight));
            total = _mm_add_epi32(total, _mm_mullo_epi32(load128(sum), factor));
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
    kernels.addLines = addLinePairs;
    kernels.finishNarrow[3] = finish<3>;
    kernels.finishNarrow[4] = finish<4>;
}

void overwrite(AverageKernels<uint16_t>& kernels) { kernels.addLines = addLines<uint16_t>; }

}  // namespace vorn::x86
