// Which kernels (inner loops) are used. Every kernel exists in a plain form, which says what the
// result is; where the processor has newer instructions, faster forms with the same results take
// the place of some.
#pragma once

namespace vorn {

// Whether the processor, and the calling thread, use the kernels that want AVX2.
bool useAvx2();

// The same for those that also want to store single bytes of a register (AVX-512 BW and VL).
bool useMaskedStores();

// Tests and benchmarks: makes the calling thread use the plain kernels.
void forcePlainKernels(bool plain);

// A family's plain kernels, or the same with what `overwrite` has faster forms for.
template <class Kernels>
const Kernels& chooseKernels(const Kernels& plain, void (*overwrite)(Kernels&)) {
    if (!useAvx2()) return plain;
    static const Kernels kFast = [&] {
        Kernels kernels = plain;
        overwrite(kernels);
        return kernels;
    }();
    return kFast;
}

}  // namespace vorn
