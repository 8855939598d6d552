#include "pixels/x86/kernels.h"
#include "support/cpu.h"
#include "support/x86/avx2.h"

#define VORN_MASKED_STORES __attribute__((target("avx2,avx512bw,avx512vl")))
#define VORN_INLINE inline __attribute__((always_inline))

namespace vorn::x86 {
namespace {

// A move under way.
template <int kInputs>
struct Mover {
    __m256i source[kInputs];
    const uint8_t* from[kInputs];
    ptrdiff_t fromStep[kInputs];  // of one move
    uint8_t* to;
    ptrdiff_t toStep;

    VORN_AVX2 VORN_INLINE Mover(const ByteMove& move, const MovePlace& place) {
        for (int i = 0; i < kInputs; ++i) {
            source[i] = _mm256_broadcastsi128_si256(load128(move.source[i]));
            from[i] = place.source + move.from[i] + place.sourceFirst * move.fromStep[i];
            fromStep[i] = move.fromStep[i] * move.pixels;
        }
        to = place.destination + move.to + place.destinationFirst * move.toStep;
        toStep = move.toStep * move.pixels;
    }

    // The bytes of this move.
    VORN_AVX2 VORN_INLINE __m128i one() const {
        __m128i made = _mm_setzero_si128();
        for (int i = 0; i < kInputs; ++i) {
            const __m128i part =
                _mm_shuffle_epi8(load128(from[i]), _mm256_castsi256_si128(source[i]));
            made = i == 0 ? part : _mm_or_si128(made, part);
        }
        return made;
    }
    // Those of this one and, in the upper half, the next.
    VORN_AVX2 VORN_INLINE __m256i two() const {
        __m256i made = _mm256_setzero_si256();
        for (int i = 0; i < kInputs; ++i) {
            const __m256i both = _mm256_inserti128_si256(_mm256_castsi128_si256(load128(from[i])),
                                                         load128(from[i] + fromStep[i]), 1);
            const __m256i part = _mm256_shuffle_epi8(both, source[i]);
            made = i == 0 ? part : _mm256_or_si256(made, part);
        }
        return made;
    }

    VORN_INLINE void advance(ptrdiff_t moves) {
        for (int i = 0; i < kInputs; ++i) from[i] += moves * fromStep[i];
        to += moves * toStep;
    }
    VORN_INLINE void advancePixels(const ByteMove& move, ptrdiff_t pixels) {
        for (int i = 0; i < kInputs; ++i) from[i] += pixels * move.fromStep[i];
        to += pixels * move.toStep;
    }
};

// Pixels that no whole move covers are made by one that ends with the last of them; others are then
// made twice.
template <int kInputs>
VORN_AVX2 void moveWhole(const ByteMove& move, const MovePlace& place, int32_t lastStart) {
    Mover<kInputs> mover(move, place);
    int32_t x = 0;
    for (; x + move.pixels <= lastStart; x += 2 * move.pixels) {
        const __m256i made = mover.two();
        if (mover.toStep == ByteMove::kBytes) {
            store256(mover.to, made);
        } else {
            store128(mover.to, _mm256_castsi256_si128(made));
            store128(mover.to + mover.toStep, _mm256_extracti128_si256(made, 1));
        }
        mover.advance(2);
    }
    if (x < lastStart) store128(mover.to, mover.one());
    mover.advancePixels(move, lastStart - x);
    store128(mover.to, mover.one());
}

template <int kInputs>
VORN_MASKED_STORES void moveBetweenGaps(const ByteMove& move,
                                        const MovePlace& place,
                                        int32_t lastStart) {
    Mover<kInputs> mover(move, place);
    const auto mask = static_cast<__mmask16>(move.written);
    const __mmask32 both = move.written | move.written << 16;
    int32_t x = 0;
    for (; x + move.pixels <= lastStart; x += 2 * move.pixels) {
        const __m256i made = mover.two();
        if (mover.toStep == ByteMove::kBytes) {
            _mm256_mask_storeu_epi8(mover.to, both, made);
        } else {
            _mm_mask_storeu_epi8(mover.to, mask, _mm256_castsi256_si128(made));
            _mm_mask_storeu_epi8(mover.to + mover.toStep, mask, _mm256_extracti128_si256(made, 1));
        }
        mover.advance(2);
    }
    if (x < lastStart) _mm_mask_storeu_epi8(mover.to, mask, mover.one());
    mover.advancePixels(move, lastStart - x);
    _mm_mask_storeu_epi8(mover.to, mask, mover.one());
}

}  // namespace

void overwrite(MoveKernels& kernels) {
    kernels = {{nullptr, moveWhole<1>, moveWhole<2>, moveWhole<3>, moveWhole<4>}, {}};
    if (useMaskedStores()) {
        kernels.gaps[1] = moveBetweenGaps<1>;
        kernels.gaps[2] = moveBetweenGaps<2>;
        kernels.gaps[3] = moveBetweenGaps<3>;
        kernels.gaps[4] = moveBetweenGaps<4>;
    }
}

}  // namespace vorn::x86
