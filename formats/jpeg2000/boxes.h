// The boxes of a JP2 file around its codestream, as far as the library leaves them alone.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/common/exif.h"
#include "formats/common/files.h"
#include "formats/common/image_to_save.h"

namespace jpeg2000 {

struct Boxes {
    int64_t codestream = -1;  // its place in the file; -1: there is none
    formats::Exif notes;      // the resolution is that of its own box, where there is one
};

Boxes readBoxes(formats::InputFile& file);

// All that stands before the codestream. The last 8 bytes are the head of its box, with the length
// 0, which means: up to the end of the file.
std::vector<uint8_t> boxesFor(const formats::ImageToSave& image);

}  // namespace jpeg2000
