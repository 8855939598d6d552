// A picture's palette in the form that a transfer looks colours up in.
#pragma once

#include <vorn/types.h>

#include "support/memory.h"

namespace vorn {

// The palette in the handle's image list as the host's buffer and the chosen conversion want it.
Owned<VORN_ChunkyBuffer> convertedPalette(const VORN_Image& image, const VORN_ChunkyBuffer& buffer);

// True unless the handle's conversion looks colours up and there is no palette to look them up in.
// Then error 17 is recorded when memory was short, `otherwise` when the handle has no palette in
// order.
bool hasNeededPalette(VORN_Image& image,
                      const Owned<VORN_ChunkyBuffer>& palette,
                      int32_t otherwise);

}  // namespace vorn
