#include "formats/tiff/tiff_loader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "formats/common/divide_by_alpha.h"
#include "formats/common/exif.h"
#include "formats/common/inks.h"
#include "formats/common/picture_limit.h"
#include "formats/common/utf8.h"

namespace tiff_format {
namespace {

using formats::Failure;

constexpr double kCentimetresPerInch = 2.54;

bool isTiff(formats::InputFile& file) {
    char start[4] = {};
    if (file.read(start, sizeof start) != sizeof start) return false;
    const std::string_view head(start, sizeof start);
    using namespace std::string_view_literals;
    return head == "II*\0"sv || head == "MM\0*"sv || head == "II+\0"sv || head == "MM\0+"sv;
}

uint32_t bitsAt(const uint8_t* bytes, size_t bit, unsigned count) {
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i, ++bit)
        value = value << 1 | (bytes[bit / 8] >> (7 - bit % 8) & 1u);
    return value;
}

}  // namespace

formats::Description TiffLoader::open(formats::InputFile file) {
    if (!isTiff(file)) throw Failure{formats::kNotThisFormat};
    file_.emplace(std::move(file));
    formats::Description image;
    openPage(image);
    readLayout();
    image.width = static_cast<int32_t>(width_);
    image.height = static_cast<int32_t>(height_);
    describeTags(image);
    if (chooseColors(image))
        preparePieces();
    else
        readWholePicture(image);
    return image;
}

uint16_t TiffLoader::field(ttag_t tag) const {
    uint16_t value = 0;
    TIFFGetFieldDefaulted(file_->get(), tag, &value);
    return value;
}

void TiffLoader::openPage(formats::Description& image) {
    const auto count = static_cast<int32_t>(TIFFNumberOfDirectories(file_->get()));
    const int32_t page = wishes().page;
    if (page < 1 || page > count) throw Failure{formats::kNoSuchPage};
    file_->check(TIFFSetDirectory(file_->get(), static_cast<tdir_t>(page - 1)));
    image.tags.number(ITAG_PageNumber, page);
    image.tags.number(ITAG_PageCount, count);
}

void TiffLoader::readLayout() {
    TIFF* tiff = file_->get();
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width_);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height_);
    if (width_ < 1 || height_ < 1) throw Failure{formats::kDamaged};
    if (width_ > VORN_MAX_SIZE || height_ > VORN_MAX_SIZE) throw Failure{formats::kUnsupported};
    // libtiff lets the JPEG library make RGB of YCbCr.
    const uint16_t compression = field(TIFFTAG_COMPRESSION);
    file_->check(TIFFIsCODECConfigured(compression) != 0);
    photometric_ = field(TIFFTAG_PHOTOMETRIC);
    if (compression == COMPRESSION_JPEG && photometric_ == PHOTOMETRIC_YCBCR) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        photometric_ = PHOTOMETRIC_RGB;
    }
    bits_ = field(TIFFTAG_BITSPERSAMPLE);
    samples_ = field(TIFFTAG_SAMPLESPERPIXEL);
    planes_ = samples_ > 1 && field(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    tiles_ = TIFFIsTiled(tiff) != 0;
    const uint16_t format = field(TIFFTAG_SAMPLEFORMAT);
    // The logarithms of light are signed.
    const bool plain = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID ||
                       photometric_ == PHOTOMETRIC_LOGL || photometric_ == PHOTOMETRIC_LOGLUV;
    if (bits_ < 1 || bits_ > 16 || !plain) throw Failure{formats::kUnsupported};
}

// False: these are samples that libtiff has to turn into colours itself.
bool TiffLoader::chooseColors(formats::Description& image) {
    size_t colors = 1;
    switch (photometric_) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
            image.colorSpace = VORN_CS_GRAY;
            inverted_ = photometric_ == PHOTOMETRIC_MINISWHITE;
            break;
        case PHOTOMETRIC_RGB:
            colors = 3;
            break;
        case PHOTOMETRIC_SEPARATED:
            if (field(TIFFTAG_INKSET) != INKSET_CMYK) return false;
            image.colorSpace = VORN_CS_CMYK;
            colors = 4;
            break;
        case PHOTOMETRIC_PALETTE:
            if (bits_ > 8) return false;
            image.colorSpace = VORN_CS_CMAPPED;
            describePalette(image);
            break;
        default:
            return false;
    }
    if (samples_ < colors) throw Failure{formats::kDamaged};
    image.channels = static_cast<int32_t>(colors);
    chooseAlpha(image);
    image.bytesPerChannel = bits_ > 8 ? 2 : 1;
    image.significantBits = bits_;
    channels_ = static_cast<size_t>(image.channels);
    bytes_ = static_cast<size_t>(image.bytesPerChannel);
    const int32_t wish = wishes().colorSpace;
    if (image.colorSpace == VORN_CS_CMYK && (wish == VORN_CS_RGB || wish == VORN_CS_GRAY)) {
        inks_.resize(width_ * channels_ * bytes_);
        image.colorSpace = VORN_CS_RGB;
        --image.channels;
    }
    if (photometric_ == PHOTOMETRIC_PALETTE || bits_ == 8 || bits_ == 16) return true;
    const uint32_t full = bits_ > 8 ? 65535 : 255;
    const uint32_t most = (1u << bits_) - 1;
    for (uint32_t value = 0; value <= most; ++value)
        scale_.push_back(static_cast<uint16_t>((value * full + most / 2) / most));
    return true;
}

// Of the samples beside the colours, only alpha is handed on, and only when it comes first.
void TiffLoader::chooseAlpha(formats::Description& image) {
    uint16_t count = 0;
    uint16_t* kinds = nullptr;
    TIFFGetFieldDefaulted(file_->get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (samples_ <= image.channels || count < 1 || !kinds) return;
    if (image.colorSpace == VORN_CS_CMAPPED || kinds[0] == EXTRASAMPLE_UNSPECIFIED) return;
    image.alpha = true;
    image.channels += 1;
    multiplied_ = kinds[0] == EXTRASAMPLE_ASSOCALPHA && image.colorSpace != VORN_CS_CMYK;
}

void TiffLoader::describePalette(formats::Description& image) {
    uint16_t* colors[3] = {};
    file_->check(TIFFGetField(file_->get(), TIFFTAG_COLORMAP, &colors[0], &colors[1], &colors[2]));
    const size_t entries = size_t{1} << bits_;
    // Some programs write 8-bit values where 16-bit ones belong.
    bool small = true;
    for (const uint16_t* color : colors)
        small = small && std::all_of(color, color + entries, [](uint16_t v) { return v < 256; });
    std::vector<uint8_t> rgb;
    for (size_t i = 0; i < entries; ++i) {
        for (const uint16_t* color : colors)
            rgb.push_back(static_cast<uint8_t>(small ? color[i] : color[i] >> 8));
    }
    image.tags.palette(rgb);
}

void TiffLoader::describeTags(formats::Description& image) {
    TIFF* tiff = file_->get();
    formats::Exif exif;
    exif.orientation = formats::orientationFromExif(field(TIFFTAG_ORIENTATION));
    float x = 0;
    float y = 0;
    const uint16_t unit = field(TIFFTAG_RESOLUTIONUNIT);
    const double scale = unit == RESUNIT_CENTIMETER ? kCentimetresPerInch : 1;
    if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) && unit != RESUNIT_NONE &&
        TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) && x > 0 && y > 0 && x < 1e6F && y < 1e6F) {
        exif.xDpi = static_cast<int32_t>(std::lround(x * scale));
        exif.yDpi = static_cast<int32_t>(std::lround(y * scale));
    }
    for (const formats::TiffTextField& text : formats::kTiffTextFields) {
        const char* value = nullptr;
        if (!TIFFGetField(tiff, text.tag, &value) || !value || !*value) continue;
        exif.texts.emplace_back(text.id, formats::utf8FromUnknown(value));
    }
    describe(exif, image);
}

void TiffLoader::readWholePicture(formats::Description& image) {
    char reason[1024] = "";
    if (!TIFFRGBAImageOK(file_->get(), reason)) throw Failure{formats::kUnsupported};
    image.channels = 4;
    image.alpha = true;
    image.colorSpace = VORN_CS_RGB;
    image.bytesPerChannel = 1;
    image.significantBits = 8;
    const size_t bytes = formats::heldBytes(height_, int64_t{width_} * 4);
    picture_.resize(bytes / sizeof(uint32_t));
    // In the orientation of the file: the host turns it.
    const int orientation = field(TIFFTAG_ORIENTATION);
    file_->check(TIFFReadRGBAImageOriented(file_->get(), width_, height_, picture_.data(),
                                           orientation, 1) != 0);
    multiplied_ = true;
    bytes_ = 1;
    channels_ = 4;
}

void TiffLoader::preparePieces() {
    TIFF* tiff = file_->get();
    size_t count = planes_ ? channels_ : 1;
    pieceWidth_ = width_;
    if (tiles_) {
        TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &pieceWidth_);
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &pieceHeight_);
        if (pieceWidth_ < 1 || pieceHeight_ < 1) throw Failure{formats::kDamaged};
        count *= (width_ + pieceWidth_ - 1) / pieceWidth_;
        pieceLine_ = static_cast<size_t>(TIFFTileRowSize(tiff));
        pieceSize_ = static_cast<size_t>(TIFFTileSize(tiff));
    } else {
        TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &pieceHeight_);
        pieceHeight_ = planes_ ? std::clamp(pieceHeight_, 1u, height_) : 1;
        pieceLine_ = static_cast<size_t>(TIFFScanlineSize(tiff));
        pieceSize_ = pieceLine_ * pieceHeight_;
    }
    const size_t samples = planes_ ? 1 : samples_;
    if (pieceLine_ < (size_t{pieceWidth_} * samples * bits_ + 7) / 8)
        throw Failure{formats::kDamaged};
    pieces_.resize(
        formats::heldBytes(static_cast<int64_t>(count), static_cast<int64_t>(pieceSize_)));
}

void TiffLoader::readPieces() {
    TIFF* tiff = file_->get();
    const auto row = static_cast<uint32_t>(line_);
    if (!tiles_ && !planes_) {
        file_->check(TIFFReadScanline(tiff, pieces_.data(), row, 0) == 1);
        return;
    }
    uint8_t* piece = pieces_.data();
    for (size_t plane = 0; plane < (planes_ ? channels_ : 1); ++plane) {
        const auto sample = static_cast<uint16_t>(plane);
        for (uint32_t x = 0; x < width_; x += pieceWidth_, piece += pieceSize_) {
            if (tiles_)
                file_->check(TIFFReadTile(tiff, piece, x, row, 0, sample) >= 0);
            else
                readStrip(TIFFComputeStrip(tiff, row, sample), piece);
        }
    }
}

// Where samples are stored as they are, libtiff reads on behind the end of a strip that is too
// short.
void TiffLoader::readStrip(uint32_t strip, uint8_t* piece) {
    TIFF* tiff = file_->get();
    const size_t lines = std::min<size_t>(pieceHeight_, height_ - static_cast<uint32_t>(line_));
    const bool stored = field(TIFFTAG_COMPRESSION) == COMPRESSION_NONE;
    file_->check(!stored || TIFFGetStrileByteCount(tiff, strip) >= lines * pieceLine_);
    file_->check(TIFFReadEncodedStrip(tiff, strip, piece, static_cast<tmsize_t>(pieceSize_)) >= 0);
}

// Takes the first `count` of `stride` samples a pixel.
void TiffLoader::unpack(
    const uint8_t* from, size_t pixels, size_t stride, size_t count, uint8_t* to) const {
    const size_t step = channels_ * bytes_;
    if (bits_ == 8 || bits_ == 16) {
        for (size_t x = 0; x < pixels; ++x)
            std::memcpy(to + x * step, from + x * stride * bytes_, count * bytes_);
        return;
    }
    for (size_t x = 0; x < pixels; ++x) {
        for (size_t c = 0; c < count; ++c) {
            const uint32_t value = bitsAt(from, (x * stride + c) * bits_, bits_);
            const uint32_t sample = scale_.empty() ? value : scale_[value];
            std::memcpy(to + x * step + c * bytes_, &sample, bytes_);
        }
    }
}

// Makes RGB of a line's inks.
template <class Sample>
void TiffLoader::paint(uint8_t* line) const {
    std::vector<Sample> pixel(channels_);
    const size_t step = channels_ * sizeof(Sample);
    for (size_t x = 0; x < width_; ++x, line += step - sizeof(Sample)) {
        std::memcpy(pixel.data(), &inks_[x * step], step);
        for (size_t c = 0; c < 3; ++c) pixel[c] = formats::paperUnder(pixel[c], pixel[3]);
        std::memcpy(line, pixel.data(), 3 * sizeof(Sample));
        if (channels_ == 5) std::memcpy(line + 3 * sizeof(Sample), &pixel[4], sizeof(Sample));
    }
}

void TiffLoader::readLine(uint8_t* line) {
    uint8_t* const samples = inks_.empty() ? line : inks_.data();
    const auto row = static_cast<uint32_t>(line_);
    if (!picture_.empty()) {
        std::memcpy(line, &picture_[size_t{row} * width_], size_t{width_} * 4);
    } else {
        if (row % pieceHeight_ == 0) readPieces();
        const uint8_t* piece = pieces_.data() + row % pieceHeight_ * pieceLine_;
        for (size_t plane = 0; plane < (planes_ ? channels_ : 1); ++plane) {
            for (uint32_t x = 0; x < width_; x += pieceWidth_, piece += pieceSize_)
                unpack(piece, std::min(pieceWidth_, width_ - x), planes_ ? 1 : samples_,
                       planes_ ? 1 : channels_, samples + (x * channels_ + plane) * bytes_);
        }
    }
    if (inks_.empty())
        finishLine(line);
    else if (bytes_ == 1)
        paint<uint8_t>(line);
    else
        paint<uint16_t>(line);
    ++line_;
}

void TiffLoader::finishLine(uint8_t* line) const {
    if (inverted_) {
        const size_t colors = channels_ == 2 ? 1 : channels_;
        for (size_t x = 0; x < width_; ++x) {
            for (size_t i = 0; i < colors * bytes_; ++i) {
                uint8_t& byte = line[x * channels_ * bytes_ + i];
                byte = static_cast<uint8_t>(~byte);
            }
        }
    }
    if (multiplied_) formats::divideByAlpha(line, width_, channels_, bytes_);
}

}  // namespace tiff_format
