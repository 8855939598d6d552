// One use of openjpeg on a file that is to be read.
#pragma once

#include "formats/jpeg2000/openjpeg.h"

namespace jpeg2000 {

// Whole lines or a part of them, on the grid of the file.
struct Area {
    uint32_t x0, y0, x1, y1;
};

class Decoder {
  public:
    // Reads the head. Width and height are halved `reduction` times.
    Decoder(formats::InputFile& file, OPJ_CODEC_FORMAT format, uint32_t reduction);

    // How often the size can be halved.
    uint32_t mostReduction() const;

    // Once: the pixels of the area, or all.
    void decode(const Area* area);

    // Before decode() what the head says of the components in the file; afterwards the components
    // that come out, which are others where the file has a palette.
    const opj_image_t& image() const { return *image_; }

  private:
    void check(bool succeeded) const;

    Stream stream_;
    Codec codec_;
    Image image_;
};

}  // namespace jpeg2000
