// Puts the faster forms into the kernel tables.
#pragma once

#include "pixels/line_kernels.h"

namespace vorn::x86 {

void overwrite(CopyKernels& kernels);
void overwrite(MoveKernels& kernels);
void overwrite(ConvertKernels& kernels);

}  // namespace vorn::x86
