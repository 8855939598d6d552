// What stands behind the pixels of a PNG file: many programs put their texts and EXIF there.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/common/files.h"

namespace png {

// The chunks between the last pixels and the end, as they stand there. None where the file doesn't
// end as a PNG file does, and none beyond the last 128 KiB.
std::vector<uint8_t> chunksBehindPixels(formats::InputFile& file);

}  // namespace png
