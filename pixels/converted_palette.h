// A picture's palette in the form that a transfer looks colours up in.
#pragma once

#include <vorn/types.h>

#include "support/memory.h"

namespace vorn {

// The palette in the handle's image list as the host's buffer and the chosen conversion want it.
Owned<VORN_ChunkyBuffer> convertedPalette(const VORN_Image& image, const VORN_ChunkyBuffer& buffer);

// False when the handle's conversion looks colours up and there is no palette to look them up in.
bool hasNeededPalette(const VORN_Image& image, const Owned<VORN_ChunkyBuffer>& palette);

}  // namespace vorn
