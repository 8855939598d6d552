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

bool useAvx2() { return processorHasAvx2() && !threadState<KernelChoice>().plain; }

void forcePlainKernels(bool plain) { threadState<KernelChoice>().plain = plain; }

}  // namespace vorn
