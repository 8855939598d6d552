#include "formats/tiff/tiff_saver.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/common/utf8.h"
#include "formats/settings/module_settings.h"
#include "tiff_capabilities.h"

namespace tiff_format {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr int64_t kSmallFile = 4'000'000'000;  // places in the file are 32-bit numbers
constexpr size_t kEntries = 256;

int photometricOf(const ImageToSave& image) {
    switch (image.colorSpace) {
        case VORN_CS_GRAY:
            return PHOTOMETRIC_MINISBLACK;
        case VORN_CS_RGB:
            return PHOTOMETRIC_RGB;
        case VORN_CS_CMYK:
            return PHOTOMETRIC_SEPARATED;
        case VORN_CS_CMAPPED:
            if (image.channels == 1 && image.bytesPerChannel == 1) return PHOTOMETRIC_PALETTE;
            [[fallthrough]];
        default:
            throw Failure{formats::kCannotSave};
    }
}

constexpr settings::Choice<uint16_t> kCompressions[] = {{"none", COMPRESSION_NONE},
                                                        {"lzw", COMPRESSION_LZW},
                                                        {"deflate", COMPRESSION_ADOBE_DEFLATE},
                                                        {"packbits", COMPRESSION_PACKBITS},
                                                        {"jpeg", COMPRESSION_JPEG}};

constexpr int kFullChromaQuality = 90;

bool isForJpeg(const ImageToSave& image) {
    return image.bytesPerChannel == 1 && !image.alpha &&
           (image.colorSpace == VORN_CS_GRAY || image.colorSpace == VORN_CS_RGB);
}

constexpr settings::Choice<uint32_t> kTiles[] = {{"none", 0},  {"64", 64},   {"128", 128},
                                                 {"256", 256}, {"512", 512}, {"1024", 1024}};

uint32_t roundedUp(int32_t count, uint32_t step) {
    return (static_cast<uint32_t>(count) + step - 1) / step * step;
}

}  // namespace

formats::LineLayout TiffSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    int photometric = photometricOf(image);
    const settings::ModuleSettings set("tiff", VORN_SAVER, kTiffCapabilities);
    const uint16_t compression = set.choice("Compression", kCompressions);
    lossy_ = compression == COMPRESSION_JPEG;
    if (lossy_ && !isForJpeg(image)) throw Failure{formats::kCannotSave};
    if (lossy_ && photometric == PHOTOMETRIC_RGB) photometric = PHOTOMETRIC_YCBCR;
    tile_ = set.choice("Tiles", kTiles);
    height_ = static_cast<uint32_t>(image.height);
    const int32_t pixelBytes = image.channels * image.bytesPerChannel;
    pixelBytes_ = static_cast<size_t>(pixelBytes);
    lineBytes_ = static_cast<size_t>(image.width) * pixelBytes_;
    tileLineBytes_ = size_t{tile_} * static_cast<size_t>(pixelBytes);
    // What lies beyond the picture's edges is in the tiles too.
    const int64_t stored =
        tile_ ? int64_t{roundedUp(image.width, tile_)} * roundedUp(image.height, tile_) * pixelBytes
              : static_cast<int64_t>(lineBytes_) * image.height;
    file_.emplace(file, stored > kSmallFile);
    TIFF* tiff = file_->get();
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(image.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(image.height));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.channels);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8 * image.bytesPerChannel);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    file_->check(TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression) != 0);
    // Differences of neighbours compress better than amounts; of indices they say nothing.
    if (compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR,
                     photometric == PHOTOMETRIC_PALETTE ? PREDICTOR_NONE : PREDICTOR_HORIZONTAL);
    if (compression == COMPRESSION_ADOBE_DEFLATE)
        TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, set.number("Level"));
    if (lossy_) putQuality(set.number("Quality"));
    putColors(image);
    putTags(image);
    if (tile_) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tile_);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile_);
        out_.resize(formats::heldBytes(tile_, int64_t{roundedUp(image.width, tile_)} * pixelBytes));
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
        out_.resize(lineBytes_);
    }
    return {image.channels, image.bytesPerChannel};
}

// The JPEG library makes YCbCr of RGB.
void TiffSaver::putQuality(int quality) {
    const int chroma = quality >= kFullChromaQuality ? 1 : 2;
    TIFFSetField(file_->get(), TIFFTAG_YCBCRSUBSAMPLING, chroma, chroma);
    TIFFSetField(file_->get(), TIFFTAG_JPEGQUALITY, quality);
    TIFFSetField(file_->get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
}

void TiffSaver::putColors(const ImageToSave& image) {
    TIFF* tiff = file_->get();
    if (image.colorSpace == VORN_CS_CMYK) TIFFSetField(tiff, TIFFTAG_INKSET, INKSET_CMYK);
    if (image.colorSpace == VORN_CS_CMAPPED) putPalette(image);
    if (image.alpha) {
        const uint16_t kind = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
}

void TiffSaver::putPalette(const ImageToSave& image) {
    const std::vector<uint8_t> rgb = image.palette();
    if (rgb.empty() || rgb.size() > 3 * kEntries) throw Failure{formats::kCannotSave};
    uint16_t colors[3][kEntries] = {};
    for (size_t i = 0; i < rgb.size(); ++i)
        colors[i % 3][i / 3] = static_cast<uint16_t>(rgb[i] * 257);
    TIFFSetField(file_->get(), TIFFTAG_COLORMAP, colors[0], colors[1], colors[2]);
}

void TiffSaver::putTags(const ImageToSave& image) {
    TIFF* tiff = file_->get();
    TIFFSetField(tiff, TIFFTAG_ORIENTATION,
                 formats::exifFromOrientation(image.number(ITAG_Orientation).value_or(0)));
    const formats::Resolution dpi = formats::resolutionOf(image);
    const formats::Resolution noted = dpi.x > 0 ? dpi : formats::densityOf(image);
    if (noted.x > 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(noted.x));
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(noted.y));
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, dpi.x > 0 ? RESUNIT_INCH : RESUNIT_NONE);
    }
    for (const formats::TiffTextField& field : formats::kTiffTextFields) {
        const std::string text = image.text(field.id);
        if (!text.empty()) TIFFSetField(tiff, field.tag, text.c_str());
    }
}

void TiffSaver::writeLine(const uint8_t* line) {
    if (!tile_) {
        std::copy_n(line, lineBytes_, out_.begin());
        file_->check(TIFFWriteScanline(file_->get(), out_.data(), line_++, 0) == 1);
        return;
    }
    uint8_t* to = out_.data() + line_ % tile_ * tileLineBytes_;
    for (size_t at = 0; at < lineBytes_; at += tileLineBytes_, to += tile_ * tileLineBytes_) {
        const size_t part = std::min(tileLineBytes_, lineBytes_ - at);
        std::copy_n(line + at, part, to);
        for (size_t beyond = part; lossy_ && beyond < tileLineBytes_; beyond += pixelBytes_)
            std::copy_n(to + beyond - pixelBytes_, pixelBytes_, to + beyond);
    }
    ++line_;
    if (line_ % tile_ == 0 || line_ == height_) writeTiles();
}

// The tiles of one row, which lie one behind the other. Beyond the picture's edges are zeros,
// or what stands at the edges: where there is loss it shows inside.
void TiffSaver::writeTiles() {
    const size_t bytes = tile_ * tileLineBytes_;
    uint32_t x = 0;
    for (size_t at = 0; at < out_.size(); at += bytes, x += tile_) {
        uint8_t* to = &out_[at] + ((line_ - 1) % tile_ + 1) * tileLineBytes_;
        for (; lossy_ && to < &out_[at] + bytes; to += tileLineBytes_)
            std::copy_n(to - tileLineBytes_, tileLineBytes_, to);
        file_->check(TIFFWriteTile(file_->get(), &out_[at], x, line_ - 1, 0, 0) >= 0);
    }
    std::fill(out_.begin(), out_.end(), uint8_t{0});
}

void TiffSaver::finish() {
    file_->check(TIFFWriteDirectory(file_->get()) != 0);
    file_->close();
}

}  // namespace tiff_format
