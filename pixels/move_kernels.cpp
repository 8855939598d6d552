#include "pixels/line_kernels.h"
#include "support/cpu.h"
#if defined(VORN_X86)
#include "pixels/x86/kernels.h"
#endif

namespace vorn {

const MoveKernels& moveKernels() {
    static constexpr MoveKernels kPlain{};
#if defined(VORN_X86)
    return chooseKernels<MoveKernels>(kPlain, x86::overwrite);
#else
    return kPlain;
#endif
}

}  // namespace vorn
