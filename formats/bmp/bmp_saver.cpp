#include "formats/bmp/bmp_saver.h"

#include <algorithm>
#include <cmath>

#include "formats/common/exif.h"
#include "formats/common/little_endian.h"

namespace bmp {
namespace {

using formats::Failure;
using formats::ImageToSave;
using formats::putLittleEndian;

constexpr size_t kFileHead = 14;
constexpr size_t kInfoHead = 40;
constexpr size_t kHeadWithAlpha = 108;
constexpr uint32_t kStandardColors = 0x73524742;  // "sRGB"
constexpr size_t kBlock = 65536;
constexpr int64_t kLargestFile = 0xFFFFFFFF;
constexpr size_t kMostEntries = 256;
constexpr double kMetresPerInch = 0.0254;

// Red, green and blue of each entry; none for images that need no palette.
std::vector<uint8_t> paletteFor(const ImageToSave& image) {
    if (image.colorSpace == VORN_CS_RGB || image.alpha) return {};
    std::vector<uint8_t> rgb;
    if (image.colorSpace == VORN_CS_CMAPPED) {
        rgb = image.palette();
        if (rgb.empty() || rgb.size() > 3 * kMostEntries) throw Failure{formats::kCannotSave};
        return rgb;
    }
    for (size_t i = 0; i < 3 * kMostEntries; ++i) rgb.push_back(static_cast<uint8_t>(i / 3));
    return rgb;
}

void check(const ImageToSave& image) {
    const bool indexed =
        image.colorSpace == VORN_CS_CMAPPED && image.channels == 1 && image.bytesPerChannel == 1;
    if (!indexed && image.colorSpace != VORN_CS_RGB && image.colorSpace != VORN_CS_GRAY)
        throw Failure{formats::kCannotSave};
}

uint32_t perMetre(int32_t dotsPerInch) {
    return static_cast<uint32_t>(std::lround(std::min(dotsPerInch / kMetresPerInch, 2e9)));
}

std::vector<uint8_t> headFor(const ImageToSave& image,
                             const std::vector<uint8_t>& palette,
                             uint32_t pixelBytes,
                             uint32_t pictureBytes) {
    const size_t infoHead = image.alpha ? kHeadWithAlpha : kInfoHead;
    const auto before = static_cast<uint32_t>(kFileHead + infoHead + palette.size() / 3 * 4);
    const formats::Resolution dpi = formats::resolutionOf(image);
    std::vector<uint8_t> head{'B', 'M'};
    putLittleEndian(head, before + pictureBytes, 4);
    putLittleEndian(head, 0, 4);
    putLittleEndian(head, before, 4);
    putLittleEndian(head, static_cast<uint32_t>(infoHead), 4);
    putLittleEndian(head, static_cast<uint32_t>(image.width), 4);
    putLittleEndian(head, static_cast<uint32_t>(image.height), 4);
    putLittleEndian(head, 1, 2);
    putLittleEndian(head, 8 * pixelBytes, 2);
    putLittleEndian(head, image.alpha ? 3 : 0, 4);  // with alpha, the channels' bits are given
    putLittleEndian(head, pictureBytes, 4);
    putLittleEndian(head, perMetre(dpi.x), 4);
    putLittleEndian(head, perMetre(dpi.y), 4);
    putLittleEndian(head, static_cast<uint32_t>(palette.size() / 3), 4);
    putLittleEndian(head, 0, 4);
    if (image.alpha) {
        for (const uint32_t mask : {0xFF0000u, 0xFF00u, 0xFFu, 0xFF000000u, kStandardColors})
            putLittleEndian(head, mask, 4);
        head.resize(kFileHead + kHeadWithAlpha);
    }
    for (size_t i = 0; i < palette.size(); i += 3)
        head.insert(head.end(), {palette[i + 2], palette[i + 1], palette[i], 0});
    return head;
}

}  // namespace

formats::LineLayout BmpSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    check(image);
    const std::vector<uint8_t> palette = paletteFor(image);
    file_ = &file;
    width_ = static_cast<size_t>(image.width);
    channels_ = static_cast<size_t>(image.channels);
    pixelBytes_ = image.alpha ? 4 : palette.empty() ? 3 : 1;
    lineBytes_ = (width_ * pixelBytes_ + 3) / 4 * 4;
    const int64_t pictureBytes = static_cast<int64_t>(lineBytes_) * image.height;
    if (pictureBytes + 2048 > kLargestFile) throw Failure{formats::kCannotSave};
    const std::vector<uint8_t> head = headFor(image, palette, static_cast<uint32_t>(pixelBytes_),
                                              static_cast<uint32_t>(pictureBytes));
    file.write(head.data(), head.size());
    place_ = static_cast<int64_t>(head.size()) + pictureBytes;
    block_.resize(std::max(kBlock / lineBytes_, size_t{1}) * lineBytes_);
    start_ = block_.size();
    return {image.channels, 1};
}

// The last line stands first in the file, so blocks of lines are filled and written from their end.
void BmpSaver::writeLine(const uint8_t* line) {
    if (start_ == 0) flush();
    start_ -= lineBytes_;
    uint8_t* out = &block_[start_];
    if (pixelBytes_ == 1) {
        std::copy_n(line, width_, out);
        return;
    }
    const size_t colors = channels_ < 3 ? 1 : 3;
    for (size_t x = 0; x < width_; ++x, line += channels_, out += pixelBytes_) {
        out[0] = line[colors - 1];
        out[1] = line[colors / 2];
        out[2] = line[0];
        if (pixelBytes_ == 4) out[3] = line[channels_ - 1];
    }
}

void BmpSaver::flush() {
    const size_t bytes = block_.size() - start_;
    place_ -= static_cast<int64_t>(bytes);
    file_->seek(place_);
    file_->write(&block_[start_], bytes);
    start_ = block_.size();
}

void BmpSaver::finish() { flush(); }

}  // namespace bmp
