#include "formats/tiff/tiff_saver.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "formats/common/exif.h"
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
                                                        {"packbits", COMPRESSION_PACKBITS}};

uint16_t storedCompression() {
    return settings::ModuleSettings("tiff", VORN_SAVER, kTiffCapabilities)
        .choice("Compression", kCompressions);
}

}  // namespace

formats::LineLayout TiffSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    const int photometric = photometricOf(image);
    const uint16_t compression = storedCompression();
    const int64_t lineBytes = int64_t{image.width} * image.channels * image.bytesPerChannel;
    file_.emplace(file, lineBytes * image.height > kSmallFile);
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
    putColors(image);
    putTags(image);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    out_.resize(static_cast<size_t>(lineBytes));
    return {image.channels, image.bytesPerChannel};
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
    if (dpi.x > 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(dpi.x));
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(dpi.y));
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    for (const formats::TiffTextField& field : formats::kTiffTextFields) {
        const std::string text = image.text(field.id);
        if (!text.empty()) TIFFSetField(tiff, field.tag, text.c_str());
    }
}

void TiffSaver::writeLine(const uint8_t* line) {
    std::copy_n(line, out_.size(), out_.begin());
    file_->check(TIFFWriteScanline(file_->get(), out_.data(), line_++, 0) == 1);
}

void TiffSaver::finish() {
    file_->check(TIFFWriteDirectory(file_->get()) != 0);
    file_->close();
}

}  // namespace tiff_format
