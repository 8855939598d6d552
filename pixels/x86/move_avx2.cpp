#include "pixels/x86/kernels.h"
#include "support/cpu.h"
#include "support/x86/avx2.h"

#define VORN_MASKED_STORES __attribute__((target("avx2,avx512bw,avx512vl")))
#define VORN_INLINE inline __attribute__((always_inline))

namespace vorn::x86 {
namespace {

// A move under way.
template <int kInputs, int kOutputs>
struct Mover {
    __m256i source[kOutputs][kInputs];
    const uint8_t* from[kInputs];
    ptrdiff_t fromStep[kInputs];  // of one move
    uint8_t* to[kOutputs];
    ptrdiff_t toStep[kOutputs];

    VORN_AVX2 VORN_INLINE Mover(const ByteMove& move, const MovePlace& place) {
        for (int i = 0; i < kInputs; ++i) {
            for (int o = 0; o < kOutputs; ++o) {
                source[o][i] = _mm256_broadcastsi128_si256(load128(move.source[o][i]));
            }
            from[i] = place.source + move.from.at[i] + place.sourceFirst * move.from.step[i];
            fromStep[i] = move.from.step[i] * move.pixels;
        }
        for (int o = 0; o < kOutputs; ++o) {
            to[o] = place.destination + move.to.at[o] + place.destinationFirst * move.to.step[o];
            toStep[o] = move.to.step[o] * move.pixels;
        }
    }

    // The input runs of a move to come and, in the upper half, of the next.
    struct Inputs {
        __m256i run[kInputs];
    };
    VORN_AVX2 VORN_INLINE Inputs two(ptrdiff_t moves = 0) const {
        Inputs in;
        for (int i = 0; i < kInputs; ++i) {
            const uint8_t* at = from[i] + moves * fromStep[i];
            in.run[i] = _mm256_inserti128_si256(_mm256_castsi128_si256(load128(at)),
                                                load128(at + fromStep[i]), 1);
        }
        return in;
    }
    VORN_AVX2 VORN_INLINE Inputs one() const {
        Inputs in;
        for (int i = 0; i < kInputs; ++i) in.run[i] = _mm256_castsi128_si256(load128(from[i]));
        return in;
    }

    VORN_AVX2 VORN_INLINE __m256i made(int o, const Inputs& in) const {
        __m256i bytes = _mm256_shuffle_epi8(in.run[0], source[o][0]);
        for (int i = 1; i < kInputs; ++i) {
            bytes = _mm256_or_si256(bytes, _mm256_shuffle_epi8(in.run[i], source[o][i]));
        }
        return bytes;
    }

    VORN_INLINE void advance(ptrdiff_t moves) {
        for (int i = 0; i < kInputs; ++i) from[i] += moves * fromStep[i];
        for (int o = 0; o < kOutputs; ++o) to[o] += moves * toStep[o];
    }
    VORN_INLINE void advancePixels(const ByteMove& move, ptrdiff_t pixels) {
        for (int i = 0; i < kInputs; ++i) from[i] += pixels * move.from.step[i];
        for (int o = 0; o < kOutputs; ++o) to[o] += pixels * move.to.step[o];
    }

    VORN_AVX2 VORN_INLINE void storeTwo() const {
        const Inputs in = two();
        for (int o = 0; o < kOutputs; ++o) {
            const __m256i bytes = made(o, in);
            if (toStep[o] == ByteMove::kBytes) {
                store256(to[o], bytes);
            } else {
                store128(to[o], _mm256_castsi256_si128(bytes));
                store128(to[o] + toStep[o], _mm256_extracti128_si256(bytes, 1));
            }
        }
    }
    VORN_AVX2 VORN_INLINE void storeOne() const {
        const Inputs in = one();
        for (int o = 0; o < kOutputs; ++o) store128(to[o], _mm256_castsi256_si128(made(o, in)));
    }
};

// Pixels that no whole move covers are made by one that ends with the last of them; others are then
// made twice.
template <int kInputs, int kOutputs>
VORN_AVX2 void moveWhole(const ByteMove& move, const MovePlace& place, int32_t lastStart) {
    Mover<kInputs, kOutputs> mover(move, place);
    int32_t x = 0;
    for (; x + move.pixels <= lastStart; x += 2 * move.pixels) {
        mover.storeTwo();
        mover.advance(2);
    }
    if (x < lastStart) mover.storeOne();
    mover.advancePixels(move, lastStart - x);
    mover.storeOne();
}

// Four moves whose outputs lie side by side.
template <int kInputs>
VORN_MASKED_STORES VORN_INLINE void storeFour(const Mover<kInputs, 1>& mover, __mmask64 mask) {
    const auto low = mover.two();
    const auto high = mover.two(2);
    __m512i bytes = _mm512_setzero_si512();
    for (int i = 0; i < kInputs; ++i) {
        const auto source =
            __builtin_shufflevector(mover.source[0][i], mover.source[0][i], 0, 1, 2, 3, 0, 1, 2, 3);
        const auto in = __builtin_shufflevector(low.run[i], high.run[i], 0, 1, 2, 3, 4, 5, 6, 7);
        bytes = _mm512_or_si512(bytes, _mm512_shuffle_epi8(in, source));
    }
    _mm512_mask_storeu_epi8(mover.to[0], mask, bytes);
}

template <int kInputs>
VORN_MASKED_STORES void moveBetweenGaps(const ByteMove& move,
                                        const MovePlace& place,
                                        int32_t lastStart) {
    Mover<kInputs, 1> mover(move, place);
    const auto mask = static_cast<__mmask16>(move.written);
    const auto storeOne = [&]() VORN_MASKED_STORES {
        const __m256i bytes = mover.made(0, mover.one());
        _mm_mask_storeu_epi8(mover.to[0], mask, _mm256_castsi256_si128(bytes));
        mover.advance(1);
    };
    int32_t x = 0;
    if (mover.toStep[0] == ByteMove::kBytes) {
        const __mmask64 all = move.written * 0x0001000100010001u;
        for (; x + 3 * move.pixels <= lastStart; x += 4 * move.pixels) {
            storeFour(mover, all);
            mover.advance(4);
        }
    }
    for (; x < lastStart; x += move.pixels) storeOne();
    mover.advancePixels(move, lastStart - x);
    storeOne();
}

}  // namespace

void overwrite(MoveKernels& kernels) {
    kernels.whole[1][1] = moveWhole<1, 1>;
    kernels.whole[2][1] = moveWhole<2, 1>;
    kernels.whole[3][1] = moveWhole<3, 1>;
    kernels.whole[4][1] = moveWhole<4, 1>;
    kernels.whole[2][2] = moveWhole<2, 2>;
    kernels.whole[2][3] = moveWhole<2, 3>;
    kernels.whole[3][3] = moveWhole<3, 3>;
    kernels.whole[4][3] = moveWhole<4, 3>;
    kernels.whole[4][4] = moveWhole<4, 4>;
    if (useMaskedStores()) {
        kernels.gaps[1] = moveBetweenGaps<1>;
        kernels.gaps[2] = moveBetweenGaps<2>;
        kernels.gaps[3] = moveBetweenGaps<3>;
        kernels.gaps[4] = moveBetweenGaps<4>;
    }
}

}  // namespace vorn::x86
