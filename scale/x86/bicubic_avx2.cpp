#include <algorithm>

#include "scale/x86/kernels.h"
#include "support/cpu.h"
#include "support/x86/avx2.h"

namespace vorn::x86 {
namespace {

// ---- Columns of rows to samples

// The weighted sums of eight columns.
VORN_AVX2 inline __m256i columnSums(const int32_t* const* rows,
                                    const int16_t* weights,
                                    int32_t rowCount,
                                    size_t column) {
    __m256i sum = _mm256_setzero_si256();
    for (int32_t k = 0; k < rowCount; ++k) {
        const __m256i product =
            _mm256_mullo_epi32(load256(rows[k] + column), _mm256_set1_epi32(weights[k]));
        sum = _mm256_add_epi32(sum, product);
    }
    return sum;
}

// Four rows, as enlarging wants them, with their weights at hand.
struct FourRows {
    const int32_t* rows[4];
    __m256i weights[4];
};

VORN_AVX2 inline FourRows fourRows(const int32_t* const* rows, const int16_t* weights) {
    FourRows four;
    for (int k = 0; k < 4; ++k) {
        four.rows[k] = rows[k];
        four.weights[k] = _mm256_set1_epi32(weights[k]);
    }
    return four;
}

VORN_AVX2 inline __m256i columnSums(const FourRows& four, size_t column) {
    const __m256i a = _mm256_mullo_epi32(load256(four.rows[0] + column), four.weights[0]);
    const __m256i b = _mm256_mullo_epi32(load256(four.rows[1] + column), four.weights[1]);
    const __m256i c = _mm256_mullo_epi32(load256(four.rows[2] + column), four.weights[2]);
    const __m256i d = _mm256_mullo_epi32(load256(four.rows[3] + column), four.weights[3]);
    return _mm256_add_epi32(_mm256_add_epi32(a, b), _mm256_add_epi32(c, d));
}

// Sixteen sums in order, cut and clamped. Packing works on halves of registers: their quarters are
// put in order afterwards.
VORN_AVX2 inline void storeSamples(uint8_t* out, __m256i low, __m256i high) {
    const __m256i words = _mm256_permute4x64_epi64(
        _mm256_packs_epi32(_mm256_srai_epi32(low, 22), _mm256_srai_epi32(high, 22)), 0xD8);
    store128(out,
             _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1)));
}
VORN_AVX2 inline void storeSamples(uint16_t* out, __m256i low, __m256i high) {
    store256(out, _mm256_permute4x64_epi64(
                      _mm256_packus_epi32(_mm256_srai_epi32(low, 14), _mm256_srai_epi32(high, 14)),
                      0xD8));
}

template <class Sample>
VORN_AVX2 void vertical(Sample* out,
                        const int32_t* const* rows,
                        const int16_t* weights,
                        int32_t rowCount,
                        size_t count) {
    size_t i = 0;
    if (rowCount == 4) {
        const FourRows four = fourRows(rows, weights);
        for (; i + 16 <= count; i += 16) {
            storeSamples(out + i, columnSums(four, i), columnSums(four, i + 8));
        }
    }
    for (; i + 16 <= count; i += 16) {
        storeSamples(out + i, columnSums(rows, weights, rowCount, i),
                     columnSums(rows, weights, rowCount, i + 8));
    }
    // The columns that are left: sixteen at a time from the end, some of them once more.
    if (i < count && count >= 16) {
        i = count - 16;
        storeSamples(out + i, columnSums(rows, weights, rowCount, i),
                     columnSums(rows, weights, rowCount, i + 8));
    } else if (i < count) {
        plainBicubicKernels<Sample>().vertical(out, rows, weights, rowCount, count);
    }
}

// Two lines of the same rows: each row is loaded once.
template <class Sample>
VORN_AVX2 void twoLines(Sample* out,
                        ptrdiff_t lineStep,
                        const int32_t* const* rows,
                        const int16_t* weights,
                        size_t count) {
    const FourRows first = fourRows(rows, weights);
    const FourRows second = fourRows(rows, weights + 4);
    size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i low[2] = {columnSums(first, i), columnSums(second, i)};
        const __m256i high[2] = {columnSums(first, i + 8), columnSums(second, i + 8)};
        storeSamples(out + i, low[0], high[0]);
        storeSamples(out + lineStep + i, low[1], high[1]);
    }
    const int32_t* left[4];
    for (int k = 0; k < 4; ++k) left[k] = rows[k] + i;
    const auto& plain = plainBicubicKernels<Sample>();
    plain.vertical(out + i, left, weights, 4, count - i);
    plain.vertical(out + lineStep + i, left, weights + 4, 4, count - i);
}

// ---- Samples of lines to rows

// 16-bit samples are taken as signed numbers, 32768 too low; as the weights add up to one unit, the
// sum is made good by this.
template <class Sample>
inline constexpr int32_t kBias = sizeof(Sample) == 1 ? 0 : 32768 * kBicubicUnit;

VORN_AVX2 inline __m128i rowValues(__m128i sums, const uint8_t*) {
    const __m128i values = _mm_srai_epi32(sums, 6);
    return _mm_add_epi32(values, _mm_srai_epi32(values, 8));
}
VORN_AVX2 inline __m128i rowValues(__m128i sums, const uint16_t*) {
    return _mm_srai_epi32(_mm_add_epi32(sums, _mm_set1_epi32(kBias<uint16_t>)), 14);
}

// Positions, from the first on, at which whole runs of weights meet samples of the line, with
// `slack` samples behind them.
int32_t safePositions(const BicubicPlan& plan, int channels, int slack) {
    const int32_t longest = (plan.maxCount + kWeightRun - 1) / kWeightRun * kWeightRun;
    int32_t count = plan.outSize;
    while (count > 0 && (plan.contributions.get()[count - 1].first + longest) * channels + slack >
                            plan.inSize * channels) {
        --count;
    }
    return count;
}

// One value for each of the positions `begin` to the last, where reading whole runs isn't safe.
template <class Sample, int kChannels>
void lastPositions(int32_t* row, const Sample* line, const BicubicPlan& plan, int32_t begin) {
    for (int32_t x = begin; x < plan.outSize; ++x) {
        const Contribution& entry = plan.contributions.get()[x];
        for (int c = 0; c < kChannels; ++c) {
            int32_t sum = 0;
            for (int32_t k = 0; k < entry.count; ++k) {
                sum += line[(entry.first + k) * kChannels + c] *
                       plan.weights.get()[entry.weights + static_cast<size_t>(k)];
            }
            row[x * kChannels + c] = bicubicRowValue<Sample>(sum);
        }
    }
}

// Four samples as signed 16-bit numbers.
VORN_AVX2 inline __m128i fourSamples(const uint8_t* in) { return _mm_cvtepu8_epi16(load32(in)); }
VORN_AVX2 inline __m128i fourSamples(const uint16_t* in) {
    return _mm_xor_si128(load64(in), _mm_set1_epi16(-32768));
}

// The two halves of a position's sum.
template <class Sample>
VORN_AVX2 inline __m128i halfSums(const Sample* line, const BicubicPlan& plan, int32_t x) {
    const Contribution& entry = plan.contributions.get()[x];
    const int16_t* weights = plan.weights.get() + entry.weights;
    __m128i sum = _mm_madd_epi16(fourSamples(line + entry.first), load64(weights));
    for (int32_t k = kWeightRun; k < entry.count; k += kWeightRun) {
        const __m128i more =
            _mm_madd_epi16(fourSamples(line + entry.first + k), load64(weights + k));
        sum = _mm_add_epi32(sum, more);
    }
    return sum;
}

// Where a position's samples begin.
template <int kChannels, class Sample>
VORN_AVX2 inline const Sample* begin(const Sample* line, const BicubicPlan& plan, int32_t x) {
    return line + static_cast<ptrdiff_t>(plan.contributions.get()[x].first) * kChannels;
}

// Four positions of four samples each, as signed 16-bit numbers.
VORN_AVX2 inline __m256i fourTimesFour(const uint8_t* line, const BicubicPlan& plan, int32_t x) {
    return _mm256_cvtepu8_epi16(
        _mm_setr_epi32(word32(begin<1>(line, plan, x)), word32(begin<1>(line, plan, x + 1)),
                       word32(begin<1>(line, plan, x + 2)), word32(begin<1>(line, plan, x + 3))));
}
VORN_AVX2 inline __m256i fourTimesFour(const uint16_t* line, const BicubicPlan& plan, int32_t x) {
    const __m128i low =
        _mm_unpacklo_epi64(load64(begin<1>(line, plan, x)), load64(begin<1>(line, plan, x + 1)));
    const __m128i high = _mm_unpacklo_epi64(load64(begin<1>(line, plan, x + 2)),
                                            load64(begin<1>(line, plan, x + 3)));
    return _mm256_xor_si256(_mm256_set_m128i(high, low), _mm256_set1_epi16(-32768));
}

template <class Sample>
VORN_AVX2 void horizontal1(int32_t* row, const Sample* line, const BicubicPlan& plan) {
    const int32_t safe = safePositions(plan, 1, 0);
    int32_t x = 0;
    if (plan.maxCount <= kWeightRun) {  // every position has one run of weights
        for (; x + 4 <= safe; x += 4) {
            const __m256i sums = _mm256_madd_epi16(fourTimesFour(line, plan, x),
                                                   load256(plan.weights.get() + x * kWeightRun));
            const __m128i whole =
                _mm_hadd_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
            store128(row + x, rowValues(whole, line));
        }
    }
    for (; x + 4 <= safe; x += 4) {
        const __m128i a = _mm_unpacklo_epi64(halfSums(line, plan, x), halfSums(line, plan, x + 1));
        const __m128i b =
            _mm_unpacklo_epi64(halfSums(line, plan, x + 2), halfSums(line, plan, x + 3));
        store128(row + x, rowValues(_mm_hadd_epi32(a, b), line));
    }
    lastPositions<Sample, 1>(row, line, plan, x);
}

// Two neighbouring pixels as pairs of signed 16-bit numbers: their first samples, their second ones
// and so on.
template <int kChannels>
VORN_AVX2 inline __m128i pixelPairs(const uint8_t* in) {
    const __m128i order =
        kChannels == 4 ? _mm_setr_epi8(0, -1, 4, -1, 1, -1, 5, -1, 2, -1, 6, -1, 3, -1, 7, -1)
                       : _mm_setr_epi8(0, -1, 3, -1, 1, -1, 4, -1, 2, -1, 5, -1, -1, -1, -1, -1);
    return _mm_shuffle_epi8(load64(in), order);
}
template <int kChannels>
VORN_AVX2 inline __m128i pixelPairs(const uint16_t* in) {
    const __m128i order = kChannels == 4
                              ? _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)
                              : _mm_setr_epi8(0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, -1, -1, -1, -1);
    return _mm_xor_si128(_mm_shuffle_epi8(load128(in), order), _mm_set1_epi16(-32768));
}

// Positions of one run of weights each, two at a time: sixteen bytes hold the four pixels of each.
// The result is the first position that was not made.
template <int kChannels>
VORN_AVX2 int32_t
twoPositions(int32_t* row, const uint8_t* line, const BicubicPlan& plan, int32_t end) {
    constexpr int8_t k = kChannels;
    const __m256i firstPairs = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, -1, k, -1, 1, -1, k + 1, -1, 2, -1, k + 2, -1, 3, -1, k + 3, -1));
    const __m256i lastPairs = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2 * k, -1, 3 * k, -1, 2 * k + 1, -1, 3 * k + 1, -1, 2 * k + 2, -1, 3 * k + 2,
                      -1, 2 * k + 3, -1, 3 * k + 3, -1));
    const __m256i firstWeights = _mm256_setr_epi32(0, 0, 0, 0, 2, 2, 2, 2);
    const __m256i lastWeights = _mm256_setr_epi32(1, 1, 1, 1, 3, 3, 3, 3);
    int32_t x = 0;
    for (; x + 2 <= end; x += 2) {
        const __m256i pixels = _mm256_set_m128i(load128(begin<kChannels>(line, plan, x + 1)),
                                                load128(begin<kChannels>(line, plan, x)));
        const __m256i weights =
            _mm256_castsi128_si256(load128(plan.weights.get() + x * kWeightRun));
        __m256i sums =
            _mm256_add_epi32(_mm256_madd_epi16(_mm256_shuffle_epi8(pixels, firstPairs),
                                               _mm256_permutevar8x32_epi32(weights, firstWeights)),
                             _mm256_madd_epi16(_mm256_shuffle_epi8(pixels, lastPairs),
                                               _mm256_permutevar8x32_epi32(weights, lastWeights)));
        sums = _mm256_srai_epi32(sums, 6);
        sums = _mm256_add_epi32(sums, _mm256_srai_epi32(sums, 8));
        store128(row + x * kChannels, _mm256_castsi256_si128(sums));
        store128(row + (x + 1) * kChannels, _mm256_extracti128_si256(sums, 1));
    }
    return x;
}

template <class Sample, int kChannels>
VORN_AVX2 void horizontal(int32_t* row, const Sample* line, const BicubicPlan& plan) {
    // Pixels of three samples are read, and their values stored, as if they were four: a pixel must
    // follow in the row, and up to four samples in the line.
    const int32_t safe = safePositions(plan, kChannels, kChannels == 4 ? 0 : 4);
    const int32_t end = std::min(safe, plan.outSize - 1);
    int32_t x = 0;
    if constexpr (sizeof(Sample) == 1) {
        if (plan.maxCount <= kWeightRun) x = twoPositions<kChannels>(row, line, plan, end);
    }
    for (; x < end; ++x) {
        const Contribution& entry = plan.contributions.get()[x];
        const int16_t* weights = plan.weights.get() + entry.weights;
        const Sample* in = begin<kChannels>(line, plan, x);
        __m128i sum = _mm_setzero_si128();
        for (int32_t k = 0; k < entry.count; k += 2) {
            const __m128i pairs = pixelPairs<kChannels>(in + k * kChannels);
            sum = _mm_add_epi32(sum, _mm_madd_epi16(pairs, _mm_set1_epi32(word32(weights + k))));
        }
        store128(row + x * kChannels, rowValues(sum, line));
    }
    lastPositions<Sample, kChannels>(row, line, plan, x);
}

template <class Sample>
void overwriteAll(BicubicKernels<Sample>& kernels) {
    kernels.horizontal[1] = horizontal1<Sample>;
    kernels.horizontal[3] = horizontal<Sample, 3>;
    kernels.horizontal[4] = horizontal<Sample, 4>;
    kernels.vertical = vertical<Sample>;
    kernels.fourRows[2] = twoLines<Sample>;
    if (useWordSums()) overwriteNewest(kernels);
}

}  // namespace

void bicubicRowAvx2(int32_t* row, const uint8_t* line, const BicubicPlan& plan) {
    horizontal1(row, line, plan);
}
void bicubicRowAvx2(int32_t* row, const uint16_t* line, const BicubicPlan& plan) {
    horizontal1(row, line, plan);
}

void overwrite(BicubicKernels<uint8_t>& kernels) { overwriteAll(kernels); }
void overwrite(BicubicKernels<uint16_t>& kernels) { overwriteAll(kernels); }

}  // namespace vorn::x86
