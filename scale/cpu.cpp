#include "scale/cpu.h"

#include "support/thread_state.h"

namespace vorn {
namespace {

struct KernelChoice {
    bool plain = false;
};

bool processorHasAvx2() {
#if defined(VORN_SCALE_X86)
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

}  // namespace

KernelSet kernelSet() {
    if (threadState<KernelChoice>().plain || !processorHasAvx2()) return KernelSet::Plain;
    return KernelSet::Avx2;
}

void forcePlainKernels(bool plain) { threadState<KernelChoice>().plain = plain; }

}  // namespace vorn
