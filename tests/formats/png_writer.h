// PNG files of every kind, made with libpng itself.
#pragma once

#include <png.h>

#include <cstdint>
#include <string>
#include <vector>

struct PngFile {
    png_uint_32 width = 5;
    png_uint_32 height = 9;
    int colorType = PNG_COLOR_TYPE_RGB;
    int depth = 8;
    bool interlaced = false;
    std::vector<png_color> palette{};
    std::vector<png_byte> entryAlpha{};       // of the palette's first entries
    std::vector<png_color_16> transparent{};  // the one colour that is see-through, or none
    std::vector<png_text> texts{};
    std::vector<png_byte> exif{};
    bool notesLast = false;  // texts and EXIF stand behind the pixels
    png_uint_32 xResolution = 0;
    png_uint_32 yResolution = 0;
    int resolutionUnit = PNG_RESOLUTION_METER;

    int channels() const;
    // Sample c of pixel (x, y): noise, so that an exchange of any two shows.
    unsigned sample(png_uint_32 x, png_uint_32 y, int c) const;
    std::string bytes() const;
};
