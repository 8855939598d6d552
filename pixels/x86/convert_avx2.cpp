#include "pixels/convert_loops.h"
#include "pixels/x86/kernels.h"
#include "support/x86/avx2.h"

namespace vorn::x86 {
namespace {

template <ConvertKernel kLoop>
struct WithAvx2 {
    VORN_AVX2 static void run(const uint8_t* const source[3],
                              uint8_t* const destination[3],
                              int32_t count) {
        kLoop(source, destination, count);
    }
};

}  // namespace

void overwrite(ConvertKernels& kernels) { kernels = conversionsAs<WithAvx2>(); }

}  // namespace vorn::x86
