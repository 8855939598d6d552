// Reading into a buffer of another size than the image has.
#pragma once

#include <vorn/types.h>

#include "pixels/transfer.h"

namespace vorn {

// Reads a started image through a scaler. False after any failure; the module is then back in its
// command loop.
bool readScaled(VORN_Image& image,
                const VORN_ImageBuffer& buffer,
                const VORN_DataFormat& format,
                const TransferOptions& options,
                const VORN_ChunkyBuffer* palette);

}  // namespace vorn
