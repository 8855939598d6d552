// Which of a method's kernels are used. Every kernel exists in a plain form, which says what the
// result is; where the processor has newer instructions, faster forms with the same results take
// the place of some.
#pragma once

namespace vorn {

// Whether the processor, and the calling thread, use the kernels of scale/x86.
bool useAvx2();

// Tests and benchmarks: makes the calling thread's scalers use the plain kernels.
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
