#include "formats/tga/tga_loader.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "formats/common/divide_by_alpha.h"
#include "formats/common/little_endian.h"
#include "formats/common/utf8.h"
#include "formats/tga/tga_extension.h"

namespace tga {
namespace {

using formats::Failure;
using formats::littleEndian;

constexpr size_t kHeadSize = 18;
constexpr int kIndexed = 1;
constexpr int kColor = 2;
constexpr int kGrey = 3;
constexpr int kRunLengthBit = 8;
constexpr uint32_t kMostEntries = 256;
constexpr uint8_t kRightToLeft = 0x10;
constexpr uint8_t kTopDown = 0x20;

// Where the first pixel of the file is to be seen: bottom left, bottom right, top left, top right.
constexpr int32_t kOrientations[] = {6, 2, 0, 4};

// By repetition of the highest bits, as most programs widen them.
uint8_t widen(uint32_t fiveBits) { return static_cast<uint8_t>(fiveBits << 3 | fiveBits >> 2); }

struct Color {
    uint8_t red, green, blue, alpha;
};

Color colorOf(uint32_t pixel, unsigned bits) {
    if (bits >= 24)
        return {static_cast<uint8_t>(pixel >> 16), static_cast<uint8_t>(pixel >> 8),
                static_cast<uint8_t>(pixel), static_cast<uint8_t>(pixel >> 24)};
    return {widen(pixel >> 10 & 31), widen(pixel >> 5 & 31), widen(pixel & 31),
            static_cast<uint8_t>(pixel >> 15 & 1 ? 255 : 0)};
}

bool isColorDepth(unsigned bits) { return bits == 15 || bits == 16 || bits == 24 || bits == 32; }

bool isKnown(int kind, unsigned bits, const uint8_t* head) {
    if (kind == kIndexed) return head[1] == 1 && (bits == 8 || bits == 16) && isColorDepth(head[7]);
    if (head[1] == 1 && !isColorDepth(head[7])) return false;
    return (kind == kColor && isColorDepth(bits)) || (kind == kGrey && (bits == 8 || bits == 16));
}

// That the colour map takes in the file.
size_t mapBytes(const uint8_t* head) {
    return size_t{littleEndian(&head[5], 2)} * ((head[7] + 7u) / 8);
}

}  // namespace

// TGA has no mark at its start: what is not one of its kinds is of another format.
formats::Description TgaLoader::open(formats::InputFile file) {
    file_ = std::move(file);
    uint8_t head[kHeadSize];
    if (file_.read(head, sizeof head) != sizeof head) throw Failure{formats::kNotThisFormat};
    runLength_ = (head[2] & kRunLengthBit) != 0;
    kind_ = head[2] & ~kRunLengthBit;
    bits_ = head[16];
    alphaBits_ = head[17] & 15u;
    if (head[1] > 1 || !isKnown(kind_, bits_, head)) throw Failure{formats::kNotThisFormat};

    formats::Description image;
    image.width = static_cast<int32_t>(littleEndian(&head[12], 2));
    image.height = static_cast<int32_t>(littleEndian(&head[14], 2));
    if (image.width < 1 || image.height < 1) throw Failure{formats::kDamaged};
    width_ = static_cast<size_t>(image.width);
    upward_ = !runLength_ && !(head[17] & kTopDown);
    const bool fromTop = upward_ || head[17] & kTopDown;
    image.orientation = kOrientations[(head[17] & kRightToLeft ? 1 : 0) + (fromTop ? 2 : 0)];

    std::string note(head[0], '\0');
    file_.readExactly(note.data(), note.size());
    describeNotes(formats::utf8FromUnknown(note.substr(0, note.find('\0'))), image);
    file_.seek(static_cast<int64_t>(kHeadSize + note.size()));
    if (head[1] == 1) readMap(head);
    chooseColors(image);
    if (upward_) {
        const size_t before = kHeadSize + head[0] + (head[1] == 1 ? mapBytes(head) : 0);
        lines_.start(file_, static_cast<int64_t>(before), width_ * pixelBytes(),
                     static_cast<size_t>(image.height));
    }
    return image;
}

// The note in the head counts more than the comments behind the pixels.
void TgaLoader::describeNotes(const std::string& note, formats::Description& image) {
    const int32_t orientation = image.orientation;
    Extension extension = readExtension(file_);
    auto& texts = extension.notes.texts;
    if (!note.empty()) {
        std::erase_if(texts, [](const auto& text) { return text.first == ITAG_Description; });
        texts.emplace_back(ITAG_Description, note);
    }
    extension.notes.orientation = orientation;
    describe(extension.notes, image);
    multiplied_ = extension.multiplied;
}

void TgaLoader::readMap(const uint8_t* head) {
    firstEntry_ = littleEndian(&head[3], 2);
    const uint32_t count = littleEndian(&head[5], 2);
    const unsigned bits = head[7];
    const size_t bytes = (bits + 7) / 8;
    std::vector<uint8_t> raw(mapBytes(head));
    file_.readExactly(raw.data(), raw.size());
    if (kind_ != kIndexed) return;
    if (count == 0) throw Failure{formats::kDamaged};
    for (size_t i = 0; i < count; ++i) {
        const Color color = colorOf(littleEndian(&raw[i * bytes], bytes), bits);
        map_.insert(map_.end(), {color.red, color.green, color.blue, color.alpha});
    }
    mapAlpha_ = bits == 32;
}

void TgaLoader::chooseColors(formats::Description& image) {
    image.colorSpace = kind_ == kGrey ? VORN_CS_GRAY : VORN_CS_RGB;
    image.channels = kind_ == kGrey ? 1 : 3;
    if (kind_ == kIndexed) {
        const size_t entries = firstEntry_ + map_.size() / 4;
        indexed_ = bits_ == 8 && !mapAlpha_ && entries <= kMostEntries;
        image.alpha = mapAlpha_;
    } else {
        image.alpha = kind_ == kGrey ? bits_ == 16 : alphaBits_ > 0 && bits_ != 15 && bits_ != 24;
        if (bits_ < 24 && kind_ == kColor) image.significantBits = 5;
    }
    if (indexed_) {
        std::vector<uint8_t> rgb(size_t{firstEntry_} * 3);
        for (size_t i = 0; i < map_.size(); i += 4) rgb.insert(rgb.end(), &map_[i], &map_[i] + 3);
        image.colorSpace = VORN_CS_CMAPPED;
        image.channels = 1;
        image.tags.palette(rgb);
    }
    image.channels += image.alpha ? 1 : 0;
    channels_ = static_cast<size_t>(image.channels);
}

void TgaLoader::readLine(uint8_t* line) {
    const uint8_t* raw = upward_ ? lines_.next() : nullptr;
    uint8_t* const start = line;
    for (size_t x = 0; x < width_; ++x) {
        if (runLength_)
            readRunPixel();
        else if (upward_)
            pixel_ = littleEndian(raw + x * pixelBytes(), pixelBytes());
        else
            readPixel();
        store(line);
    }
    if (multiplied_ && channels_ % 2 == 0) formats::divideByAlpha(start, width_, channels_, 1);
}

void TgaLoader::readPixel() {
    uint8_t bytes[4];
    const size_t count = pixelBytes();
    for (size_t i = 0; i < count; ++i) {
        const int byte = file_.nextByte();
        if (byte < 0) throw Failure{formats::kDamaged};
        bytes[i] = static_cast<uint8_t>(byte);
    }
    pixel_ = littleEndian(bytes, count);
}

// A run may go on in the next line.
void TgaLoader::readRunPixel() {
    if (left_ == 0) {
        const int packet = file_.nextByte();
        if (packet < 0) throw Failure{formats::kDamaged};
        repeating_ = (packet & 128) != 0;
        left_ = (packet & 127) + 1;
        if (repeating_) readPixel();
    }
    if (!repeating_) readPixel();
    --left_;
}

void TgaLoader::store(uint8_t*& line) const {
    if (kind_ == kGrey || indexed_) {
        *line++ = static_cast<uint8_t>(pixel_);
        if (channels_ == 2) *line++ = static_cast<uint8_t>(pixel_ >> 8);
        return;
    }
    Color color = colorOf(pixel_, bits_);
    if (kind_ == kIndexed) {
        const size_t entry = pixel_ - firstEntry_;
        color = {0, 0, 0, 0};
        if (pixel_ >= firstEntry_ && entry < map_.size() / 4)
            color = {map_[4 * entry], map_[4 * entry + 1], map_[4 * entry + 2],
                     map_[4 * entry + 3]};
    }
    *line++ = color.red;
    *line++ = color.green;
    *line++ = color.blue;
    if (channels_ == 4) *line++ = color.alpha;
}

}  // namespace tga
