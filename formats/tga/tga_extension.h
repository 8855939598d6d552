// What TGA files of version 2 say behind their pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/common/exif.h"
#include "formats/common/files.h"
#include "formats/common/image_to_save.h"

namespace tga {

struct Extension {
    formats::Exif notes;      // texts and pixel aspect
    bool multiplied = false;  // the colours, by alpha
};

// Nothing where the file has none, or what it has is damaged.
Extension readExtension(formats::InputFile& file);

// Nothing where the image says nothing that belongs there.
std::vector<uint8_t> extensionOf(const formats::ImageToSave& image);

// The last bytes of a file. 0: it has no extension.
std::vector<uint8_t> footer(uint32_t extensionPlace);

}  // namespace tga
