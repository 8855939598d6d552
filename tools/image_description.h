// What a loader says about a picture, as values.
#pragma once

#include <vorn/host.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/fields.h"

namespace vorn::tool {

struct ImageDescription {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;         // alpha included
    int32_t bytesPerChannel = 1;  // of a sample in memory
    int32_t bitsPerChannel = 8;   // that count, of the first channel
    bool alpha = false;
    int32_t colorSpace = VORN_CS_NONE;
    std::optional<int32_t> orientation;
    std::optional<int32_t> paletteEntries;
    bool greyPalette = false;  // all entries are greys
    int32_t pages = 1;         // or frames, in the file
    Fields fields;
    std::string loader;
};

// Of an image that a loader has opened. Throws the library's failure for the file.
ImageDescription describe(VORN_Image* image, const std::string& file, const std::string& loader);

// A palette as the module sent it: its colour space, its data format, and the entries, all of which
// lie inside the item. False when there is none that can be used.
struct PaletteView {
    int32_t colorSpace = VORN_CS_NONE;
    VORN_DataFormat format{};
    const uint8_t* bytes = nullptr;  // colour space, format and entries, as a tag holds them
    uint32_t byteCount = 0;
};
bool findPalette(VORN_Image* image, PaletteView& palette);

}  // namespace vorn::tool
