#include "pixels/read_scaled.h"

#include <vorn/library.h>

#include "errors/error_numbers.h"

namespace vorn {

// This build has no scalers: the host is told so.
bool readScaled(VORN_Image& image,
                const VORN_ImageBuffer&,
                const VORN_DataFormat&,
                const TransferOptions&,
                const VORN_ChunkyBuffer*) {
    VORN_L_SetErrorCode(&image, kErrorNoScaling, 0);
    return abandonTransfer(image);
}

}  // namespace vorn
