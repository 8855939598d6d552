// The head of a PNM file (PBM, PGM, PPM in their plain and raw forms, and PAM).
#pragma once

#include <cstdint>

#include "formats/common/files.h"

namespace pnm {

struct Header {
    bool plain = false;   // samples are decimal numbers
    bool bitmap = false;  // PBM: samples are single bits, and 1 is black
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;  // alpha included
    int32_t maxValue = 1;
    bool alpha = false;  // the last channel is alpha
    int32_t colorSpace = 0;
};

// Reads the head and the one white space behind it. Throws kNotThisFormat when the file doesn't
// begin like a PNM file, kUnsupported for sizes and channel counts beyond the library's, kDamaged
// for anything else that isn't right.
Header readHeader(formats::InputFile& file);

// The next number of a plain file, -1 at its end. Comments are skipped.
int32_t readNumber(formats::InputFile& file);

// The next digit of a plain PBM file, whose digits need no space between them; -1 at its end.
int32_t readBit(formats::InputFile& file);

}  // namespace pnm
