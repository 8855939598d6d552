// What kernels for AVX2 share: functions marked VORN_AVX2 may use these instructions, and run only
// where the processor has them (see support/cpu.h).
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#define VORN_AVX2 __attribute__((target("avx2")))

namespace vorn {

VORN_AVX2 inline __m256i load256(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
VORN_AVX2 inline void store256(void* p, __m256i v) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}
VORN_AVX2 inline __m128i load128(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
VORN_AVX2 inline void store128(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}
VORN_AVX2 inline __m128i load64(const void* p) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(p));
}
VORN_AVX2 inline void store64(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }
VORN_AVX2 inline int32_t word32(const void* p) {
    int32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}
VORN_AVX2 inline __m128i load32(const void* p) { return _mm_cvtsi32_si128(word32(p)); }
VORN_AVX2 inline void store32(void* p, __m128i v) {
    const int32_t word = _mm_cvtsi128_si32(v);
    std::memcpy(p, &word, sizeof word);
}

}  // namespace vorn
