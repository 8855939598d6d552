// Which of a method's kernels are used. Every kernel exists in a plain form, which says what the
// result is; where the processor has newer instructions, faster forms with the same results take
// its place.
#pragma once

namespace vorn {

enum class KernelSet { Plain, Avx2 };

// The best set that the processor runs, unless the calling thread asked for another.
KernelSet kernelSet();

// Tests and benchmarks: makes the scalers that this thread sets up from now on use the plain
// kernels.
void forcePlainKernels(bool plain);

}  // namespace vorn
