#include "formats/gif/gif_saver.h"

#include <algorithm>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/gif/palette_maker.h"

namespace gif {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr size_t kMostEntries = 256;
constexpr int32_t kLargestSize = 65535;

std::vector<uint8_t> greys() {
    std::vector<uint8_t> rgb;
    for (size_t i = 0; i < 3 * kMostEntries; ++i) rgb.push_back(static_cast<uint8_t>(i / 3));
    return rgb;
}

}  // namespace

formats::LineLayout GifSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    if (image.width > kLargestSize || image.height > kLargestSize)
        throw Failure{formats::kCannotSave};
    file_ = &file;
    width_ = image.width;
    height_ = image.height;
    channels_ = static_cast<size_t>(image.channels);
    comment_ = image.text(ITAG_Description);
    const formats::Resolution density = formats::densityOf(image);
    // A pixel is (byte + 15) / 64 times as wide as high.
    if (density.x > 0 && density.x != density.y)
        aspect_ =
            static_cast<uint8_t>(std::clamp((int64_t{density.y} * 64 + density.x / 2) / density.x,
                                            int64_t{16}, int64_t{270}) -
                                 15);
    const bool grey = image.colorSpace == VORN_CS_GRAY;
    if (image.colorSpace == VORN_CS_CMAPPED && channels_ == 1 && image.bytesPerChannel == 1) {
        const std::vector<uint8_t> rgb = image.palette();
        if (rgb.empty() || rgb.size() > 3 * kMostEntries) throw Failure{formats::kCannotSave};
        writeHead(rgb, NO_TRANSPARENT_COLOR);
    } else if (grey && channels_ == 1) {
        writeHead(greys(), NO_TRANSPARENT_COLOR);
    } else if (grey || image.colorSpace == VORN_CS_RGB) {
        collecting_ = true;
        picture_.reserve(formats::heldBytes(height_, int64_t{width_} * image.channels));
    } else {
        throw Failure{formats::kCannotSave};
    }
    return {image.channels, 1};
}

int GifSaver::writeBytes(GifFileType* gif, const GifByteType* bytes, int count) {
    auto* saver = static_cast<GifSaver*>(gif->UserData);
    try {
        saver->file_->write(bytes, static_cast<size_t>(count));
        return count;
    } catch (const Failure& failure) {
        saver->failure_ = failure;
    } catch (...) {
        saver->failure_ = Failure{formats::kOutOfMemory};
    }
    return 0;
}

void GifSaver::check(bool succeeded) const {
    if (!succeeded) throw failure_;
}

void GifSaver::writeHead(const std::vector<uint8_t>& rgb, int transparent) {
    int size = 2;
    while (size < static_cast<int>(rgb.size() / 3)) size *= 2;
    const std::unique_ptr<ColorMapObject, void (*)(ColorMapObject*)> map(
        GifMakeMapObject(size, nullptr), GifFreeMapObject);
    if (!map) throw Failure{formats::kOutOfMemory};
    for (size_t i = 0; i + 2 < rgb.size(); i += 3)
        map->Colors[i / 3] = {rgb[i], rgb[i + 1], rgb[i + 2]};
    gif_.reset(EGifOpen(this, &writeBytes, nullptr));
    if (!gif_) throw Failure{formats::kOutOfMemory};
    GifFileType* gif = gif_.get();
    EGifSetGifVersion(gif, true);
    gif->AspectByte = aspect_;
    check(EGifPutScreenDesc(gif, width_, height_, 8, 0, map.get()) == GIF_OK);
    if (!comment_.empty()) check(EGifPutComment(gif, comment_.c_str()) == GIF_OK);
    if (transparent != NO_TRANSPARENT_COLOR) {
        GraphicsControlBlock control{};
        control.TransparentColor = transparent;
        GifByteType block[4];
        const size_t length = EGifGCBToExtension(&control, block);
        check(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, static_cast<int>(length), block) ==
              GIF_OK);
    }
    check(EGifPutImageDesc(gif, 0, 0, width_, height_, false, nullptr) == GIF_OK);
}

void GifSaver::writeLine(const uint8_t* line) {
    const auto width = static_cast<size_t>(width_);
    if (collecting_)
        picture_.insert(picture_.end(), line, line + width * channels_);
    else
        writeIndices(line);
}

void GifSaver::writeIndices(const uint8_t* line) {
    line_.assign(line, line + width_);
    check(EGifPutLine(gif_.get(), line_.data(), width_) == GIF_OK);
}

void GifSaver::finish() {
    if (collecting_) {
        const auto width = static_cast<size_t>(width_);
        const IndexedPicture indexed =
            indexedPicture(picture_, channels_, width, static_cast<size_t>(height_));
        writeHead(indexed.rgb, indexed.transparent);
        for (size_t at = 0; at < indexed.indices.size(); at += width)
            writeIndices(&indexed.indices[at]);
    }
    check(EGifCloseFile(gif_.release(), nullptr) == GIF_OK);
}

}  // namespace gif
