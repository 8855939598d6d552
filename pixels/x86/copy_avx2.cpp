// Straight runs of samples that change their size. What is left at the end of a run is done by a
// last step that does a part once more.
#include "pixels/samples.h"
#include "pixels/x86/kernels.h"
#include "support/x86/avx2.h"

namespace vorn::x86 {
namespace {

constexpr int32_t kAtOnce = 32;

template <class Source, class Destination>
void copyFew(const uint8_t* source, uint8_t* destination, int32_t count) {
    for (int32_t x = 0; x < count; ++x) {
        const auto sample = loadSample<Source>(source + x * static_cast<int32_t>(sizeof(Source)));
        storeSample(destination + x * static_cast<int32_t>(sizeof(Destination)),
                    resizedSample<Destination>(sample));
    }
}

VORN_AVX2 inline void widenSome(const uint8_t* source, uint8_t* destination) {
    // Unpacking works on halves of registers: with the quarters in this order all end in place.
    const __m256i bytes = _mm256_permute4x64_epi64(load256(source), 0xD8);
    store256(destination, _mm256_unpacklo_epi8(bytes, bytes));
    store256(destination + 32, _mm256_unpackhi_epi8(bytes, bytes));
}

VORN_AVX2 void widen(
    const uint8_t* source, ptrdiff_t, uint8_t* destination, ptrdiff_t, int32_t count) {
    if (count < kAtOnce) return copyFew<uint8_t, uint16_t>(source, destination, count);
    const ptrdiff_t last = count - kAtOnce;
    for (ptrdiff_t x = 0; x < last; x += kAtOnce) widenSome(source + x, destination + 2 * x);
    widenSome(source + last, destination + 2 * last);
}

VORN_AVX2 inline void narrowSome(const uint8_t* source, uint8_t* destination) {
    const __m256i low = _mm256_srli_epi16(load256(source), 8);
    const __m256i high = _mm256_srli_epi16(load256(source + 32), 8);
    store256(destination, _mm256_permute4x64_epi64(_mm256_packus_epi16(low, high), 0xD8));
}

VORN_AVX2 void narrow(
    const uint8_t* source, ptrdiff_t, uint8_t* destination, ptrdiff_t, int32_t count) {
    if (count < kAtOnce) return copyFew<uint16_t, uint8_t>(source, destination, count);
    const ptrdiff_t last = count - kAtOnce;
    for (ptrdiff_t x = 0; x < last; x += kAtOnce) narrowSome(source + 2 * x, destination + x);
    narrowSome(source + 2 * last, destination + last);
}

}  // namespace

void overwrite(CopyKernels& kernels) {
    kernels.form[1][1][1] = widen;
    kernels.form[2][1][1] = narrow;
}

}  // namespace vorn::x86
