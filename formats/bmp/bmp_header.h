// The head of a BMP file: everything before the pixels.
#pragma once

#include <cstdint>
#include <vector>

#include "formats/common/files.h"

namespace bmp {

enum Compression : uint32_t {
    kPlain = 0,
    kRunLength8 = 1,
    kRunLength4 = 2,
    kBitFields = 3,
    kAlphaBitFields = 6
};

// The bits of a pixel that are one channel.
struct Field {
    uint32_t mask = 0;
    uint32_t shift = 0;
    uint32_t most = 0;  // largest value

    // 0 to 255.
    uint8_t sample(uint32_t pixel) const {
        if (most == 0) return 0;
        const uint64_t value = (pixel & mask) >> shift;
        return static_cast<uint8_t>((value * 255 + most / 2) / most);
    }
};

struct Header {
    int32_t width = 0;
    int32_t height = 0;
    bool topDown = false;
    uint32_t bits = 0;  // of a pixel
    uint32_t compression = kPlain;
    int32_t xPerMetre = 0;
    int32_t yPerMetre = 0;
    std::vector<uint8_t> palette;  // red, green, blue of each entry
    Field fields[4];               // red, green, blue, alpha
    uint32_t pixels = 0;           // where they begin in the file
};

// Throws kNotThisFormat when the file doesn't begin like a BMP file, kUnsupported for sizes beyond
// the library's and for variants that nobody writes, kDamaged for anything else that isn't right.
Header readHeader(formats::InputFile& file);

}  // namespace bmp
