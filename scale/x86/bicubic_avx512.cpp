#include "scale/x86/kernels.h"
#include "support/x86/avx2.h"

#define VORN_AVX512 __attribute__((target("avx2,bmi2,avx512f,avx512bw,avx512vl,avx512vnni")))

namespace vorn::x86 {
namespace {

VORN_AVX512 inline __m512i load512(const void* p) { return _mm512_loadu_si512(p); }

// ---- Columns of rows to samples

// Sixteen columns of four rows.
struct Columns {
    __m512i rows[4];
};

VORN_AVX512 inline Columns columns(const int32_t* const* rows, size_t at) {
    return {{load512(rows[0] + at), load512(rows[1] + at), load512(rows[2] + at),
             load512(rows[3] + at)}};
}

VORN_AVX512 inline __m512i sums(const Columns& in, const __m512i* weights) {
    return _mm512_add_epi32(_mm512_add_epi32(_mm512_mullo_epi32(in.rows[0], weights[0]),
                                             _mm512_mullo_epi32(in.rows[1], weights[1])),
                            _mm512_add_epi32(_mm512_mullo_epi32(in.rows[2], weights[2]),
                                             _mm512_mullo_epi32(in.rows[3], weights[3])));
}

// Thirty-two sums in order, cut and clamped. Packing works on quarters of registers: their halves
// are put in order afterwards.
VORN_AVX512 inline void storeSamples(uint8_t* out, __m512i low, __m512i high) {
    const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    const __m512i words = _mm512_permutexvar_epi64(
        order, _mm512_packs_epi32(_mm512_srai_epi32(low, 22), _mm512_srai_epi32(high, 22)));
    const __m512i zero = _mm512_setzero_si512();
    store256(out, _mm512_cvtusepi16_epi8(_mm512_max_epi16(words, zero)));
}
VORN_AVX512 inline void storeSamples(uint16_t* out, __m512i low, __m512i high) {
    const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    const __m512i words =
        _mm512_packus_epi32(_mm512_srai_epi32(low, 14), _mm512_srai_epi32(high, 14));
    _mm512_storeu_si512(out, _mm512_permutexvar_epi64(order, words));
}

// Each row is loaded once for all lines: the rows of a wide picture don't fit the nearest cache.
template <class Sample, int kLines>
VORN_AVX512 void fourRows(Sample* out,
                          ptrdiff_t lineStep,
                          const int32_t* const* rows,
                          const int16_t* weights,
                          size_t count) {
    __m512i all[kLines][4];
    for (int l = 0; l < kLines; ++l) {
        for (int k = 0; k < 4; ++k) all[l][k] = _mm512_set1_epi32(weights[4 * l + k]);
    }
    size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        const Columns low = columns(rows, i);
        const Columns high = columns(rows, i + 16);
        for (int l = 0; l < kLines; ++l) {
            storeSamples(out + l * lineStep + i, sums(low, all[l]), sums(high, all[l]));
        }
    }
    const int32_t* left[4];
    for (int k = 0; k < 4; ++k) left[k] = rows[k] + i;
    for (int l = 0; l < kLines; ++l) {
        plainBicubicKernels<Sample>().vertical(out + l * lineStep + i, left, weights + 4 * l, 4,
                                               count - i);
    }
}

// ---- Samples of lines to rows

// Up to 32 samples as signed 16-bit numbers; what is behind the line's end is not read. 16-bit
// samples are 32768 too low, see rowValues.
VORN_AVX512 inline __m512i window(const uint8_t* in, int32_t left) {
    return _mm512_cvtepu8_epi16(
        _mm256_maskz_loadu_epi8(_bzhi_u32(~0u, static_cast<unsigned>(left)), in));
}
VORN_AVX512 inline __m512i window(const uint16_t* in, int32_t left) {
    const __mmask32 there = _bzhi_u32(~0u, static_cast<unsigned>(left));
    return _mm512_xor_si512(_mm512_maskz_loadu_epi16(there, in), _mm512_set1_epi16(-32768));
}

// What the sums start at, and the values that they stand for.
template <class Sample>
VORN_AVX512 inline __m512i start() {
    return _mm512_set1_epi32(sizeof(Sample) == 1 ? 0 : 32768 * kBicubicUnit);
}
template <class Sample>
VORN_AVX512 inline __m512i rowValues(__m512i sums) {
    if constexpr (sizeof(Sample) == 2) return _mm512_srai_epi32(sums, 14);
    const __m512i values = _mm512_srai_epi32(sums, 6);
    return _mm512_add_epi32(values, _mm512_srai_epi32(values, 8));
}

// Sixteen positions of one run of weights each, all within 32 samples: pairs of neighbouring
// samples are picked out of these and meet pairs of weights.
template <class Sample>
VORN_AVX512 inline void sixteenPositions(int32_t* row,
                                         const Sample* line,
                                         const BicubicPlan& plan,
                                         int32_t x) {
    const int32_t first = plan.firsts.get()[x];
    const __m512i samples =
        window(line + first, plan.inSize - first > 32 ? 32 : plan.inSize - first);
    const __m512i at = _mm512_sub_epi32(load512(plan.firsts.get() + x), _mm512_set1_epi32(first));
    const __m512i pair = _mm512_add_epi32(_mm512_or_si512(at, _mm512_slli_epi32(at, 16)),
                                          _mm512_set1_epi32(0x10000));
    const __m512i nextPair = _mm512_add_epi16(pair, _mm512_set1_epi16(2));
    const int16_t* weights = plan.weights.get() + x * kWeightRun;
    const __m512i even =
        _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_or_si512(even, _mm512_set1_epi32(1));
    const __m512i low = load512(weights);
    const __m512i high = load512(weights + 32);
    __m512i sums = _mm512_dpwssd_epi32(start<Sample>(), _mm512_permutexvar_epi16(pair, samples),
                                       _mm512_permutex2var_epi32(low, even, high));
    sums = _mm512_dpwssd_epi32(sums, _mm512_permutexvar_epi16(nextPair, samples),
                               _mm512_permutex2var_epi32(low, odd, high));
    _mm512_storeu_si512(row + x, rowValues<Sample>(sums));
}

template <class Sample>
VORN_AVX512 void horizontal1(int32_t* row, const Sample* line, const BicubicPlan& plan) {
    // Below this ratio sixteen positions reach over at most 28 samples and the last one's run.
    const bool near = plan.inSize <= plan.outSize * 9 / 5;
    if (!near || plan.outSize < 16 || plan.maxCount > kWeightRun) {
        return bicubicRowAvx2(row, line, plan);
    }
    int32_t x = 0;
    for (; x + 16 <= plan.outSize; x += 16) sixteenPositions(row, line, plan, x);
    // The positions that are left: sixteen from the end, some of them once more.
    if (x < plan.outSize) sixteenPositions(row, line, plan, plan.outSize - 16);
}

template <class Sample>
void overwriteAll(BicubicKernels<Sample>& kernels) {
    kernels.horizontal[1] = horizontal1<Sample>;
    kernels.fourRows[2] = fourRows<Sample, 2>;
    kernels.fourRows[3] = fourRows<Sample, 3>;
    kernels.fourRows[4] = fourRows<Sample, 4>;
}

}  // namespace

void overwriteNewest(BicubicKernels<uint8_t>& kernels) { overwriteAll(kernels); }
void overwriteNewest(BicubicKernels<uint16_t>& kernels) { overwriteAll(kernels); }

}  // namespace vorn::x86
