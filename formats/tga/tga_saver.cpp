#include "formats/tga/tga_saver.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "formats/common/little_endian.h"
#include "formats/common/utf8.h"
#include "formats/settings/module_settings.h"
#include "formats/tga/tga_extension.h"
#include "tga_capabilities.h"

namespace tga {
namespace {

using formats::Failure;
using formats::ImageToSave;
using formats::putLittleEndian;

constexpr int32_t kLargestSize = 65535;
constexpr size_t kMostEntries = 256;
constexpr size_t kLongestRun = 128;
constexpr size_t kLongestNote = 255;

bool storedRunLength() {
    return settings::ModuleSettings("tga", VORN_SAVER, kTgaCapabilities).isOn("RunLength");
}

int kindOf(const ImageToSave& image) {
    if (image.colorSpace == VORN_CS_CMAPPED && image.channels == 1 && image.bytesPerChannel == 1)
        return 1;
    if (image.colorSpace == VORN_CS_RGB || (image.colorSpace == VORN_CS_GRAY && image.alpha))
        return 2;
    if (image.colorSpace == VORN_CS_GRAY) return 3;
    throw Failure{formats::kCannotSave};
}

}  // namespace

formats::LineLayout TgaSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    const int kind = kindOf(image);
    if (image.width > kLargestSize || image.height > kLargestSize)
        throw Failure{formats::kCannotSave};
    std::vector<uint8_t> palette;
    if (kind == 1) palette = image.palette();
    if (kind == 1 && (palette.empty() || palette.size() > 3 * kMostEntries))
        throw Failure{formats::kCannotSave};
    file_ = &file;
    runLength_ = storedRunLength();
    width_ = static_cast<size_t>(image.width);
    channels_ = static_cast<size_t>(image.channels);
    pixelBytes_ = kind != 2 ? 1 : image.alpha ? 4 : 3;
    pixels_.resize(width_ * pixelBytes_);

    std::string note = image.text(ITAG_Description);
    formats::cutUtf8(note, kLongestNote);
    extension_ = extensionOf(image);
    std::vector<uint8_t> head{static_cast<uint8_t>(note.size()), static_cast<uint8_t>(kind == 1),
                              static_cast<uint8_t>(kind + (runLength_ ? 8 : 0))};
    putLittleEndian(head, 0, 2);
    putLittleEndian(head, static_cast<uint32_t>(palette.size() / 3), 2);
    head.push_back(kind == 1 ? 24 : 0);
    putLittleEndian(head, 0, 4);
    putLittleEndian(head, static_cast<uint32_t>(image.width), 2);
    putLittleEndian(head, static_cast<uint32_t>(image.height), 2);
    head.push_back(static_cast<uint8_t>(8 * pixelBytes_));
    head.push_back(image.alpha ? 0x28 : 0x20);  // the first line is the top one; bits of alpha
    head.insert(head.end(), note.begin(), note.end());
    for (size_t i = 0; i < palette.size(); i += 3)
        head.insert(head.end(), {palette[i + 2], palette[i + 1], palette[i]});
    write(head);
    return {image.channels, 1};
}

void TgaSaver::arrange(const uint8_t* line) {
    if (pixelBytes_ == 1) {
        std::copy_n(line, width_, pixels_.begin());
        return;
    }
    const size_t colors = channels_ < 3 ? 1 : 3;
    uint8_t* out = pixels_.data();
    for (size_t x = 0; x < width_; ++x, line += channels_, out += pixelBytes_) {
        out[0] = line[colors - 1];
        out[1] = line[colors / 2];
        out[2] = line[0];
        if (pixelBytes_ == 4) out[3] = line[channels_ - 1];
    }
}

void TgaSaver::writeLine(const uint8_t* line) {
    arrange(line);
    if (runLength_)
        writeRuns();
    else
        write(pixels_);
}

// Runs of equal pixels, and between them runs of pixels as they are; none crosses a line's end.
void TgaSaver::writeRuns() {
    runs_.clear();
    const auto same = [&](size_t a, size_t b) {
        return std::memcmp(&pixels_[a * pixelBytes_], &pixels_[b * pixelBytes_], pixelBytes_) == 0;
    };
    const auto put = [&](size_t first, size_t pixels) {
        runs_.insert(runs_.end(), &pixels_[first * pixelBytes_],
                     pixels_.data() + (first + pixels) * pixelBytes_);
    };
    for (size_t x = 0; x < width_;) {
        size_t count = 1;
        while (x + count < width_ && count < kLongestRun && same(x, x + count)) ++count;
        if (count > 1) {
            runs_.push_back(static_cast<uint8_t>(127 + count));
            put(x, 1);
        } else {
            while (x + count < width_ && count < kLongestRun &&
                   (x + count + 1 == width_ || !same(x + count, x + count + 1)))
                ++count;
            runs_.push_back(static_cast<uint8_t>(count - 1));
            put(x, count);
        }
        x += count;
    }
    write(runs_);
}

void TgaSaver::write(const std::vector<uint8_t>& bytes) {
    file_->write(bytes.data(), bytes.size());
    written_ += bytes.size();
}

// The place of the extension is a 32-bit number: a larger file goes without.
void TgaSaver::finish() {
    if (written_ > UINT32_MAX) extension_.clear();
    const uint32_t place = extension_.empty() ? 0 : static_cast<uint32_t>(written_);
    write(extension_);
    write(footer(place));
}

}  // namespace tga
