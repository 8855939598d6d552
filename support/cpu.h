// Which kernels (inner loops) are used. Every kernel exists in a plain form, which says what the
// result is; where the processor has newer instructions, faster forms with the same results take
// the place of some.
#pragma once

namespace vorn {

enum class KernelLevel { Plain, Avx2, Newest };

// The newest kernels that the processor has instructions for and that the calling thread allows.
KernelLevel kernelLevel();

// Whether they may want AVX2.
bool useAvx2();

// The same for those that also want to store single bytes of a register (AVX-512 BW and VL).
bool useMaskedStores();

// The same for those that also want sums of products of 16-bit numbers (AVX-512 VNNI).
bool useWordSums();

// Tests and benchmarks: the calling thread uses no newer kernels than these.
void limitKernels(KernelLevel newest);

// A family's plain kernels, or the same with what `overwrite` has faster forms for.
template <class Kernels>
const Kernels& chooseKernels(const Kernels& plain, void (*overwrite)(Kernels&)) {
    const auto faster = [&] {
        Kernels kernels = plain;
        overwrite(kernels);
        return kernels;
    };
    switch (kernelLevel()) {
        case KernelLevel::Plain:
            return plain;
        case KernelLevel::Avx2: {
            static const Kernels kAvx2 = faster();
            return kAvx2;
        }
        default: {
            static const Kernels kNewest = faster();
            return kNewest;
        }
    }
}

}  // namespace vorn
