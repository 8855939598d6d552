#include "support/cpu.h"

#include "support/thread_state.h"

namespace vorn {
namespace {

struct KernelChoice {
    bool plain = false;
};

}  // namespace

bool useAvx2() {
#if defined(VORN_X86)
    return __builtin_cpu_supports("avx2") != 0 && !threadState<KernelChoice>().plain;
#else
    return false;
#endif
}

bool useMaskedStores() {
#if defined(VORN_X86)
    return useAvx2() && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512vl") != 0;
#else
    return false;
#endif
}

void forcePlainKernels(bool plain) { threadState<KernelChoice>().plain = plain; }

}  // namespace vorn
