// A picture's palette in the form that a transfer looks colours up in.
#pragma once

#include <vorn/types.h>

#include "support/memory.h"

namespace vorn {

// The palette of an ITAG_Palette item with the given channels and sample size, its colours
// converted to `target`: one block, the record and behind it one line whose channels are runs. Null
// without an item, when memory is short, and for an item whose record or entries are not in order.
VORN_ChunkyBuffer* VORN_L_ConvertPalette(
    const VORN_TagItem* item, int32_t bytes, int32_t channels, uint32_t flags, int32_t target);

// The palette in the handle's image list as the host's buffer and the chosen conversion want it.
Owned<VORN_ChunkyBuffer> convertedPalette(const VORN_Image& image, const VORN_ChunkyBuffer& buffer);

// True unless the handle's conversion looks colours up and there is no palette to look them up in.
// Then error 17 is recorded when memory was short, `otherwise` when the handle has no palette in
// order.
bool hasNeededPalette(VORN_Image& image,
                      const Owned<VORN_ChunkyBuffer>& palette,
                      int32_t otherwise);

}  // namespace vorn
