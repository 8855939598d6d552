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

// Those of the newest level, where the processor has their instructions.
void overwriteNewest(BicubicKernels<uint8_t>& kernels);
void overwriteNewest(BicubicKernels<uint16_t>& kernels);

// Where those of the newest level can't go: lines of one channel to rows.
void bicubicRowAvx2(int32_t* row, const uint8_t* line, const BicubicPlan& plan);
void bicubicRowAvx2(int32_t* row, const uint16_t* line, const BicubicPlan& plan);

}  // namespace vorn::x86
