#include "formats/bmp/bmp_loader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "formats/common/little_endian.h"

namespace bmp {
namespace {

using formats::Failure;

constexpr double kMetresPerInch = 0.0254;
constexpr int32_t kMirroredLines = 6;  // the last line comes first

int32_t dotsPerInch(int32_t perMetre) {
    return perMetre > 0 ? static_cast<int32_t>(std::lround(perMetre * kMetresPerInch)) : 0;
}

}  // namespace

formats::Description BmpLoader::open(formats::InputFile file) {
    file_ = std::move(file);
    header_ = readHeader(file_);
    width_ = static_cast<size_t>(header_.width);
    raw_.resize((width_ * header_.bits + 31) / 32 * 4);
    upward_ = !header_.topDown && !hasRuns();
    if (upward_)
        lines_.start(file_, header_.pixels, raw_.size(), static_cast<size_t>(header_.height));
    else
        file_.seek(header_.pixels);

    formats::Description image;
    image.width = header_.width;
    image.height = header_.height;
    image.orientation = header_.topDown || upward_ ? 0 : kMirroredLines;
    image.channels = 3;
    if (header_.bits <= 8) {
        image.channels = 1;
        image.colorSpace = VORN_CS_CMAPPED;
        image.significantBits = static_cast<int32_t>(header_.bits);
        image.tags.palette(header_.palette);
    } else if (header_.bits != 24) {
        alpha_ = header_.fields[3].most > 0;
        image.alpha = alpha_;
        image.channels = alpha_ ? 4 : 3;
        const int bits = std::popcount(header_.fields[0].mask);
        image.significantBits = std::clamp(bits, 1, 8);
    }
    const int32_t x = dotsPerInch(header_.xPerMetre);
    const int32_t y = dotsPerInch(header_.yPerMetre);
    if (x > 0 && y > 0) {
        image.tags.number(ITAG_XDPI, x);
        image.tags.number(ITAG_YDPI, y);
    }
    return image;
}

void BmpLoader::readLine(uint8_t* line) {
    if (hasRuns()) {
        readRuns(line);
        return;
    }
    if (!upward_) file_.readExactly(raw_.data(), raw_.size());
    const uint8_t* raw = upward_ ? lines_.next() : raw_.data();
    if (header_.bits <= 8) {
        readIndices(line, raw);
    } else if (header_.bits == 24) {
        for (size_t x = 0; x < width_; ++x, line += 3, raw += 3) {
            line[0] = raw[2];
            line[1] = raw[1];
            line[2] = raw[0];
        }
    } else {
        readFields(line, raw);
    }
}

void BmpLoader::readIndices(uint8_t* line, const uint8_t* raw) const {
    const size_t bits = header_.bits;
    const unsigned mask = (1u << bits) - 1;
    for (size_t x = 0; x < width_; ++x) {
        const size_t bit = x * bits;
        line[x] = static_cast<uint8_t>(raw[bit / 8] >> (8 - bits - bit % 8) & mask);
    }
}

void BmpLoader::readFields(uint8_t* line, const uint8_t* raw) const {
    const size_t bytes = header_.bits / 8;
    const size_t channels = alpha_ ? 4 : 3;
    for (size_t x = 0; x < width_; ++x) {
        const uint32_t pixel = formats::littleEndian(raw + x * bytes, bytes);
        for (size_t c = 0; c < channels; ++c) *line++ = header_.fields[c].sample(pixel);
    }
}

// Pixels that no run covers keep index 0.
void BmpLoader::readRuns(uint8_t* line) {
    std::fill_n(line, width_, uint8_t{0});
    if (ended_) return;
    if (emptyLines_ > 0 && --emptyLines_ > 0) return;
    for (;;) {
        const int count = nextByte();
        const int value = nextByte();
        if (count == 0) {
            if (value == 0) {
                column_ = 0;
                return;
            }
            readCommand(line, value);
            if (ended_ || emptyLines_ > 0) return;
            continue;
        }
        for (int i = 0; i < count; ++i)
            put(line, header_.bits == 8 ? value : i % 2 ? value & 15 : value >> 4);
    }
}

void BmpLoader::readCommand(uint8_t* line, int command) {
    if (command == 1) {
        ended_ = true;
    } else if (command == 2) {
        column_ = std::min(column_ + static_cast<size_t>(nextByte()), width_);
        emptyLines_ = nextByte();
    } else {
        readLiterals(line, command);
    }
}

// Padded to an even number of bytes.
void BmpLoader::readLiterals(uint8_t* line, int count) {
    int bytes = 0;
    int value = 0;
    for (int i = 0; i < count; ++i) {
        const bool first = header_.bits == 8 || i % 2 == 0;
        if (first) {
            value = nextByte();
            ++bytes;
        }
        put(line, header_.bits == 8 ? value : first ? value >> 4 : value & 15);
    }
    if (bytes % 2) nextByte();
}

// What goes beyond the line's end is dropped.
void BmpLoader::put(uint8_t* line, int index) {
    if (column_ < width_) line[column_++] = static_cast<uint8_t>(index);
}

int BmpLoader::nextByte() {
    const int byte = file_.nextByte();
    if (byte < 0) throw Failure{formats::kDamaged};
    return byte;
}

}  // namespace bmp
