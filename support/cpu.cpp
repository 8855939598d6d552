#include "support/cpu.h"

#include <algorithm>

#include "support/thread_state.h"

namespace vorn {
namespace {

struct KernelChoice {
    KernelLevel newest = KernelLevel::Newest;
};

KernelLevel processorLevel() {
#if defined(VORN_X86)
    if (!__builtin_cpu_supports("avx2")) return KernelLevel::Plain;
    if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) {
        return KernelLevel::Newest;
    }
    return KernelLevel::Avx2;
#else
    return KernelLevel::Plain;
#endif
}

}  // namespace

KernelLevel kernelLevel() {
    static const KernelLevel kProcessor = processorLevel();
    return std::min(kProcessor, threadState<KernelChoice>().newest);
}

bool useAvx2() { return kernelLevel() >= KernelLevel::Avx2; }

bool useMaskedStores() { return kernelLevel() == KernelLevel::Newest; }

bool useWordSums() {
#if defined(VORN_X86)
    return useMaskedStores() && __builtin_cpu_supports("avx512vnni") != 0;
#else
    return false;
#endif
}

void limitKernels(KernelLevel newest) { threadState<KernelChoice>().newest = newest; }

}  // namespace vorn
