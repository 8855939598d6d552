// What stands in the codestream of a JPEG 2000 file before the pixels, read before the library gets
// to see the file: how large a picture it claims, and whether all of it is there.
#pragma once

#include <cstdint>

#include "formats/common/files.h"

namespace jpeg2000 {

// On the grid that all components share.
struct CodestreamSize {
    uint32_t x0, y0, x1, y1;  // the picture
    uint32_t tileX, tileY;    // where the first tile begins, not behind the picture
    uint32_t tileWidth, tileHeight;
    uint32_t components;
    uint32_t tilesAcross, tilesDown;
};

// `place` is where the codestream begins in the file. Throws for what can't be a picture, and for
// more tiles or components than the module deals with.
CodestreamSize readSize(formats::InputFile& file, int64_t place);

// Throws kDamaged unless all parts of all tiles lie in the file.
void checkTiles(formats::InputFile& file, int64_t place, const CodestreamSize& size);

}  // namespace jpeg2000
