#include <algorithm>

#include "scale/x86/kernels.h"
#include "support/x86/avx2.h"

namespace vorn::x86 {
namespace {

// Eight samples as 32-bit numbers.
VORN_AVX2 inline __m256i widen(const uint8_t* samples) {
    return _mm256_cvtepu8_epi32(load64(samples));
}
VORN_AVX2 inline __m256i widen(const uint16_t* samples) {
    return _mm256_cvtepu16_epi32(load128(samples));
}

// ---- Lines to sums

// How far ahead of the samples at hand lines are fetched into the cache, in bytes: the processor
// does so itself only up to the end of a page.
constexpr ptrdiff_t kFetchAhead = 1024;

VORN_AVX2 inline void fetchAhead(const void* samples) {
    _mm_prefetch(static_cast<const char*>(samples) + kFetchAhead, _MM_HINT_T0);
}

// Any weights: 32 sums at a time.
template <class Sample>
VORN_AVX2 void addLines(uint32_t* sums,
                        const WeightedLines<Sample>& lines,
                        bool start,
                        size_t count) {
    size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        __m256i total[4];
        for (size_t j = 0; j < 4; ++j) {
            total[j] = start ? _mm256_setzero_si256() : load256(sums + i + 8 * j);
        }
        for (int32_t k = 0; k < lines.count; ++k) {
            const __m256i weight = _mm256_set1_epi32(static_cast<int32_t>(lines.weights[k]));
            const Sample* in = lines.lines[k] + i;
            fetchAhead(in);
            for (size_t j = 0; j < 4; ++j) {
                total[j] =
                    _mm256_add_epi32(total[j], _mm256_mullo_epi32(widen(in + 8 * j), weight));
            }
        }
        for (size_t j = 0; j < 4; ++j) store256(sums + i + 8 * j, total[j]);
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

// ---- Sums to samples

// The low byte of each of four 32-bit numbers, in front.
VORN_AVX2 inline __m128i lowBytes(__m128i v) {
    return _mm_shuffle_epi8(
        v, _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
}

struct Rounding {
    __m128i half;
    __m128i shift;
};

VORN_AVX2 inline Rounding narrowRounding(unsigned totalShift) {
    const auto half = static_cast<int32_t>((uint32_t{1} << totalShift) >> 1);
    return {_mm_set1_epi32(half), _mm_cvtsi32_si128(static_cast<int32_t>(totalShift))};
}

// The sums of a span of pixels, four channels at a time: of three channels, the fourth is the next
// pixel's and means nothing.
template <int kChannels>
VORN_AVX2 inline __m128i pixelTotal(const uint32_t* sums, const AreaTable& samples, int32_t x) {
    const AreaSpan& span = samples.spans.get()[x];
    const uint32_t* sum = sums + static_cast<ptrdiff_t>(span.first) * kChannels;
    const uint32_t* weights = samples.weights.get() + span.weights;
    __m128i total = _mm_setzero_si128();
    for (int32_t k = 0; k < span.count; ++k, sum += kChannels) {
        const __m128i weight = _mm_set1_epi32(static_cast<int32_t>(weights[k]));
        total = _mm_add_epi32(total, _mm_mullo_epi32(load128(sum), weight));
    }
    return total;
}

// Two pixels at once, where no span has more than one run of weights.
template <int kChannels>
VORN_AVX2 inline __m256i twoPixelTotals(const uint32_t* sums, const AreaTable& samples, int32_t x) {
    const AreaSpan* spans = samples.spans.get() + x;
    const uint32_t* a = sums + static_cast<ptrdiff_t>(spans[0].first) * kChannels;
    const uint32_t* b = sums + static_cast<ptrdiff_t>(spans[1].first) * kChannels;
    const __m256i weights = load256(samples.weights.get() + static_cast<ptrdiff_t>(x) * kAreaRun);
    const __m256i w0 = _mm256_shuffle_epi32(weights, 0x00);
    const __m256i w1 = _mm256_shuffle_epi32(weights, 0x55);
    const __m256i w2 = _mm256_shuffle_epi32(weights, 0xAA);
    const __m256i w3 = _mm256_shuffle_epi32(weights, 0xFF);
    constexpr int k = kChannels;
    const __m256i p0 = _mm256_mullo_epi32(_mm256_set_m128i(load128(b), load128(a)), w0);
    const __m256i p1 = _mm256_mullo_epi32(_mm256_set_m128i(load128(b + k), load128(a + k)), w1);
    const __m256i p2 =
        _mm256_mullo_epi32(_mm256_set_m128i(load128(b + 2 * k), load128(a + 2 * k)), w2);
    const __m256i p3 =
        _mm256_mullo_epi32(_mm256_set_m128i(load128(b + 3 * k), load128(a + 3 * k)), w3);
    return _mm256_add_epi32(_mm256_add_epi32(p0, p1), _mm256_add_epi32(p2, p3));
}

template <int kChannels>
VORN_AVX2 void finish(uint8_t* out,
                      const uint32_t* sums,
                      const AreaTable& samples,
                      int32_t width,
                      unsigned totalShift) {
    const Rounding rounding = narrowRounding(totalShift);
    const __m256i half = _mm256_broadcastsi128_si256(rounding.half);
    int32_t x = 0;
    // A pixel of three channels is stored as four: another must follow.
    for (; samples.maxCount <= kAreaRun && x + 3 <= width; x += 2, out += 2 * kChannels) {
        const __m256i totals = _mm256_add_epi32(twoPixelTotals<kChannels>(sums, samples, x), half);
        const __m256i pixels = _mm256_srl_epi32(totals, rounding.shift);
        store32(out, lowBytes(_mm256_castsi256_si128(pixels)));
        store32(out + kChannels, lowBytes(_mm256_extracti128_si256(pixels, 1)));
    }
    for (; x < width; ++x, out += kChannels) {
        const __m128i total = _mm_add_epi32(pixelTotal<kChannels>(sums, samples, x), rounding.half);
        const int32_t pixel = _mm_cvtsi128_si32(lowBytes(_mm_srl_epi32(total, rounding.shift)));
        std::memcpy(out, &pixel, kChannels);
    }
}

// Four partial totals of one channel.
VORN_AVX2 inline __m128i partTotals(const uint32_t* sums, const AreaTable& samples, int32_t x) {
    const AreaSpan& span = samples.spans.get()[x];
    const uint32_t* sum = sums + span.first;
    const uint32_t* weights = samples.weights.get() + span.weights;
    __m128i total = _mm_mullo_epi32(load128(sum), load128(weights));
    for (int32_t k = kAreaRun; k < span.count; k += kAreaRun) {
        total = _mm_add_epi32(total, _mm_mullo_epi32(load128(sum + k), load128(weights + k)));
    }
    return total;
}

VORN_AVX2 void finish1(uint8_t* out,
                       const uint32_t* sums,
                       const AreaTable& samples,
                       int32_t width,
                       unsigned totalShift) {
    const Rounding rounding = narrowRounding(totalShift);
    for (int32_t x = 0; x < width; x += 4, out += 4) {
        const int32_t last = width - 1;  // made again where fewer than four are left
        const __m128i a = _mm_hadd_epi32(partTotals(sums, samples, x),
                                         partTotals(sums, samples, std::min(x + 1, last)));
        const __m128i b = _mm_hadd_epi32(partTotals(sums, samples, std::min(x + 2, last)),
                                         partTotals(sums, samples, std::min(x + 3, last)));
        const __m128i totals = _mm_add_epi32(_mm_hadd_epi32(a, b), rounding.half);
        const int32_t pixels = _mm_cvtsi128_si32(lowBytes(_mm_srl_epi32(totals, rounding.shift)));
        std::memcpy(out, &pixels, static_cast<size_t>(std::min(4, width - x)));
    }
}

// Two partial totals of one channel in 64 bits: of the even and of the odd source samples.
VORN_AVX2 inline __m128i widePartTotals(const uint32_t* sums, const AreaTable& samples, int32_t x) {
    const AreaSpan& span = samples.spans.get()[x];
    const uint32_t* sum = sums + span.first;
    const uint32_t* weights = samples.weights.get() + span.weights;
    __m128i total = _mm_setzero_si128();
    for (int32_t k = 0; k < span.count; k += kAreaRun) {
        const __m128i s = load128(sum + k);
        const __m128i w = load128(weights + k);
        total = _mm_add_epi64(total, _mm_mul_epu32(s, w));
        total = _mm_add_epi64(total, _mm_mul_epu32(_mm_srli_epi64(s, 32), _mm_srli_epi64(w, 32)));
    }
    return total;
}

// The totals of two pixels.
VORN_AVX2 inline __m128i twoWideTotals(const uint32_t* sums,
                                       const AreaTable& samples,
                                       int32_t x,
                                       int32_t y) {
    const __m128i a = widePartTotals(sums, samples, x);
    const __m128i b = widePartTotals(sums, samples, y);
    return _mm_add_epi64(_mm_unpacklo_epi64(a, b), _mm_unpackhi_epi64(a, b));
}

// Of two neighbouring pixels, where no span has more than one run of weights.
VORN_AVX2 inline __m256i widePartTotalsOfTwo(const uint32_t* sums,
                                             const AreaTable& samples,
                                             int32_t x) {
    const AreaSpan* spans = samples.spans.get() + x;
    const __m256i s =
        _mm256_set_m128i(load128(sums + spans[1].first), load128(sums + spans[0].first));
    const __m256i w = load256(samples.weights.get() + static_cast<ptrdiff_t>(x) * kAreaRun);
    return _mm256_add_epi64(_mm256_mul_epu32(s, w),
                            _mm256_mul_epu32(_mm256_srli_epi64(s, 32), _mm256_srli_epi64(w, 32)));
}

// Four pixels as 32-bit numbers.
VORN_AVX2 inline __m128i fourWidePixels(
    const uint32_t* sums, const AreaTable& samples, int32_t x, __m256i half, __m128i shift) {
    const __m256i a = widePartTotalsOfTwo(sums, samples, x);
    const __m256i b = widePartTotalsOfTwo(sums, samples, x + 2);
    const __m256i totals =
        _mm256_add_epi64(_mm256_unpacklo_epi64(a, b), _mm256_unpackhi_epi64(a, b));
    const __m256i pixels = _mm256_srl_epi64(_mm256_add_epi64(totals, half), shift);
    return _mm256_castsi256_si128(
        _mm256_permutevar8x32_epi32(pixels, _mm256_setr_epi32(0, 4, 2, 6, 0, 0, 0, 0)));
}

VORN_AVX2 inline void storeFour(uint8_t* out, __m128i pixels) { store32(out, lowBytes(pixels)); }
VORN_AVX2 inline void storeFour(uint16_t* out, __m128i pixels) {
    store64(out, _mm_packus_epi32(pixels, pixels));
}

template <class Sample>
VORN_AVX2 void finishWide1(Sample* out,
                           const uint32_t* sums,
                           const AreaTable& samples,
                           int32_t width,
                           unsigned totalShift) {
    const __m128i shift = _mm_cvtsi32_si128(static_cast<int32_t>(totalShift));
    const auto half = static_cast<int64_t>((uint64_t{1} << totalShift) >> 1);
    int32_t x = 0;
    for (; samples.maxCount <= kAreaRun && x + 4 <= width; x += 4) {
        storeFour(out + x, fourWidePixels(sums, samples, x, _mm256_set1_epi64x(half), shift));
    }
    for (; x + 2 <= width; x += 2) {
        const __m128i totals =
            _mm_add_epi64(twoWideTotals(sums, samples, x, x + 1), _mm_set1_epi64x(half));
        const __m128i pixels = _mm_srl_epi64(totals, shift);
        out[x] = static_cast<Sample>(_mm_cvtsi128_si32(pixels));
        out[x + 1] = static_cast<Sample>(_mm_extract_epi32(pixels, 2));
    }
    if (x < width) {
        const __m128i total =
            _mm_add_epi64(twoWideTotals(sums, samples, x, x), _mm_set1_epi64x(half));
        out[x] = static_cast<Sample>(_mm_cvtsi128_si32(_mm_srl_epi64(total, shift)));
    }
}

}  // namespace

void overwrite(AverageKernels<uint8_t>& kernels) {
    kernels.addLines = addLinePairs;
    kernels.finishNarrow[1] = finish1;
    kernels.finishNarrow[3] = finish<3>;
    kernels.finishNarrow[4] = finish<4>;
    kernels.finishWide[1] = finishWide1<uint8_t>;
}

void overwrite(AverageKernels<uint16_t>& kernels) {
    kernels.addLines = addLines<uint16_t>;
    kernels.finishNarrow[1] = kernels.finishWide[1] = finishWide1<uint16_t>;
}

}  // namespace vorn::x86
