// How pixels lie in this program's memory: pixel by pixel, the channels of a pixel side by side.
#pragma once

#include <vorn/types.h>

#include <cstddef>

#include "tools/conversion_plan.h"
#include "tools/target_size.h"

namespace vorn::tool {

uint64_t bytesOf(const ConversionPlan& plan, Size size);

// What a saver gets. The first form leaves the places open.
VORN_ChunkyBuffer pixelLayout(const ConversionPlan& plan, Size size);
VORN_ChunkyBuffer pixelsAt(uint8_t* place, const ConversionPlan& plan, Size size);

// What a loader fills of it: all but an alpha channel that the picture doesn't have.
VORN_ChunkyBuffer loadedPart(VORN_ChunkyBuffer buffer, const ConversionPlan& plan);

// The same memory with its columns from right to left.
VORN_ChunkyBuffer mirrored(VORN_ChunkyBuffer buffer);

// Makes what a loader doesn't fill opaque.
void prefill(uint8_t* place, size_t bytes, const ConversionPlan& plan);

}  // namespace vorn::tool
