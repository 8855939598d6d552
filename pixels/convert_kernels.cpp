#include "pixels/convert_loops.h"
#include "pixels/line_kernels.h"
#include "support/cpu.h"
#if defined(VORN_X86)
#include "pixels/x86/kernels.h"
#endif

namespace vorn {
namespace {

template <ConvertKernel kLoop>
struct Plain {
    static void run(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
        kLoop(source, destination, count);
    }
};

}  // namespace

const ConvertKernels& convertKernels() {
    static constexpr ConvertKernels kPlain = conversionsAs<Plain>();
#if defined(VORN_X86)
    return chooseKernels<ConvertKernels>(kPlain, x86::overwrite);
#else
    return kPlain;
#endif
}

}  // namespace vorn
