#include "tests/formats/png_writer.h"

namespace {

void append(png_structp png, png_bytep bytes, size_t count) {
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), count);
}

void putNotes(png_structp png, png_infop info, PngFile file) {
    if (!file.texts.empty())
        png_set_text(png, info, file.texts.data(), static_cast<int>(file.texts.size()));
    if (!file.exif.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(file.exif.size()), file.exif.data());
}

void putHead(png_structp png, png_infop info, const PngFile& file) {
    png_set_IHDR(png, info, file.width, file.height, file.depth, file.colorType,
                 file.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!file.palette.empty())
        png_set_PLTE(png, info, file.palette.data(), static_cast<int>(file.palette.size()));
    if (!file.entryAlpha.empty())
        png_set_tRNS(png, info, file.entryAlpha.data(), static_cast<int>(file.entryAlpha.size()),
                     nullptr);
    if (!file.transparent.empty()) png_set_tRNS(png, info, nullptr, 0, file.transparent.data());
    if (file.xResolution)
        png_set_pHYs(png, info, file.xResolution, file.yResolution, file.resolutionUnit);
    if (!file.notesLast) putNotes(png, info, file);
    png_write_info(png, info);
    if (file.notesLast) putNotes(png, info, file);
}

std::vector<png_byte> lineOf(const PngFile& file, png_uint_32 y) {
    std::vector<png_byte> line;
    for (png_uint_32 x = 0; x < file.width; ++x) {
        for (int c = 0; c < file.channels(); ++c) {
            const unsigned sample = file.sample(x, y, c);
            if (file.depth == 16) line.push_back(static_cast<png_byte>(sample >> 8));
            line.push_back(static_cast<png_byte>(sample));
        }
    }
    return line;
}

}  // namespace

int PngFile::channels() const {
    if (colorType == PNG_COLOR_TYPE_PALETTE) return 1;
    return (colorType & PNG_COLOR_MASK_COLOR ? 3 : 1) + (colorType & PNG_COLOR_MASK_ALPHA ? 1 : 0);
}

unsigned PngFile::sample(png_uint_32 x, png_uint_32 y, int c) const {
    const unsigned noise =
        (x * 2654435761u + y * 40503u + static_cast<unsigned>(c) * 97u + 1) * 2246822519u;
    const unsigned value = (noise >> 7) & ((1u << depth) - 1);
    return palette.empty() ? value : value % static_cast<unsigned>(palette.size());
}

std::string PngFile::bytes() const {
    std::string out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &out, &append, nullptr);
    putHead(png, info, *this);
    png_set_packing(png);
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < height; ++y) png_write_row(png, lineOf(*this, y).data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}
