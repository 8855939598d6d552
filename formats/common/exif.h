// The part of EXIF that VORN's tags know: orientation, resolution and text fields. An EXIF block is
// a small TIFF file, so TIFF files share the orientation numbers and the table of text fields.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "formats/common/description.h"
#include "formats/common/image_to_save.h"

namespace formats {

struct TiffTextField {
    uint32_t id;   // VORN's
    uint16_t tag;  // of TIFF and EXIF
};

inline constexpr size_t kTiffTextFieldCount = 9;
extern const TiffTextField kTiffTextFields[kTiffTextFieldCount];

// EXIF counts orientations from 1 to 8, by the sides at which the first line and the first column
// are to be seen. A number that is none counts as upright.
int32_t orientationFromExif(int32_t exif);
int32_t exifFromOrientation(int32_t orientation);

struct Exif {
    int32_t orientation = 0;  // as ITAG_Orientation
    int32_t xDpi = 0;         // 0: none
    int32_t yDpi = 0;
    int32_t xAspect = 0;  // ITAG_XAspect, of pixels that are no squares; 0: none
    int32_t yAspect = 0;
    std::vector<std::pair<uint32_t, std::string>> texts;
};

// Reads a block that begins with the byte order ("II" or "MM"). What is damaged is left out: a
// picture is not lost because a camera's notes are.
Exif readExif(const uint8_t* block, size_t size);

// The aspect of pixels of which so many are in a length across and down: more are narrower. None
// where they are squares.
void setAspect(Exif& exif, double across, double down);

// Adds what the block says to a description. Resolution comes before aspect.
void describe(const Exif& exif, Description& description);

// A block with what the image says, or nothing when it says nothing. Where a format has a place of
// its own for the resolution, that alone is no reason for a block; where the host turns the
// pictures, there is no orientation to note.
struct ExifParts {
    bool orientation = true;
    bool resolutionAlone = true;
};
std::vector<uint8_t> exifBlock(const ImageToSave& image, const ExifParts& parts = {});

// The resolution of an image that is to be saved; one direction serves for both. 0: none.
struct Resolution {
    int32_t x = 0;
    int32_t y = 0;
};
Resolution resolutionOf(const ImageToSave& image);

// Pixels in a length across and down, in no unit, as the image's pixel aspect has it. 0: none.
Resolution densityOf(const ImageToSave& image);

}  // namespace formats
