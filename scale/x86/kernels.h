// Puts the faster forms into the families' kernel tables.
#pragma once

#include "scale/average_kernels.h"
#include "scale/bicubic_kernels.h"
#include "scale/bilinear_kernels.h"

namespace vorn::x86 {

void overwrite(AverageKernels<uint8_t>& kernels);
void overwrite(AverageKernels<uint16_t>& kernels);
void overwrite(BilinearKernels<uint8_t>& kernels);
void overwrite(BilinearKernels<uint16_t>& kernels);
void overwrite(BicubicKernels<uint8_t>& kernels);
void overwrite(BicubicKernels<uint16_t>& kernels);

}  // namespace vorn::x86
