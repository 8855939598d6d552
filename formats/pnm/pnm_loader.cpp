#include "formats/pnm/pnm_loader.h"

#include <bit>
#include <utility>

namespace pnm {

using formats::Failure;

formats::Description PnmLoader::open(formats::InputFile file) {
    file_ = std::move(file);
    header_ = readHeader(file_);

    formats::Description image;
    image.width = header_.width;
    image.height = header_.height;
    image.channels = header_.channels;
    image.alpha = header_.alpha;
    image.colorSpace = header_.colorSpace;
    image.bytesPerChannel = header_.maxValue > 255 ? 2 : 1;
    image.significantBits = std::bit_width(static_cast<uint32_t>(header_.maxValue));

    bytes_ = static_cast<size_t>(image.bytesPerChannel);
    samples_ = static_cast<size_t>(image.width) * static_cast<size_t>(image.channels);
    makeScale();
    return image;
}

void PnmLoader::readLine(uint8_t* line) {
    if (header_.plain)
        readPlain(line);
    else if (header_.bitmap)
        readRawBits(line);
    else if (bytes_ == 1)
        readRawBytes(line);
    else
        readRawWords(line);
}

// The file counts to its own largest value, the library to 255 or 65535. In a bitmap, 1 is black.
void PnmLoader::makeScale() {
    const auto max = static_cast<uint32_t>(header_.maxValue);
    const uint32_t full = bytes_ == 1 ? 255 : 65535;
    scale_.resize(max + 1);
    for (uint32_t value = 0; value <= max; ++value) {
        const uint32_t sample = header_.bitmap ? max - value : value;
        scale_[value] = static_cast<uint16_t>((sample * full + max / 2) / max);
    }
}

// A sample above the largest value is damage: no other value could stand for it.
void PnmLoader::store(uint8_t* line, size_t sample, int32_t value) const {
    if (value < 0 || value > header_.maxValue) throw Failure{formats::kDamaged};
    const uint16_t scaled = scale_[static_cast<size_t>(value)];
    line[sample * bytes_] = static_cast<uint8_t>(scaled);
    if (bytes_ == 2) line[sample * 2 + 1] = static_cast<uint8_t>(scaled >> 8);
}

void PnmLoader::readPlain(uint8_t* line) {
    for (size_t i = 0; i < samples_; ++i)
        store(line, i, header_.bitmap ? readBit(file_) : readNumber(file_));
}

// Eight pixels a byte, the leftmost in the highest bit; each line begins with a new byte.
void PnmLoader::readRawBits(uint8_t* line) {
    raw_.resize((samples_ + 7) / 8);
    file_.readExactly(raw_.data(), raw_.size());
    for (size_t i = 0; i < samples_; ++i) store(line, i, raw_[i / 8] >> (7 - i % 8) & 1);
}

void PnmLoader::readRawBytes(uint8_t* line) {
    file_.readExactly(line, samples_);
    if (header_.maxValue == 255) return;
    for (size_t i = 0; i < samples_; ++i) store(line, i, line[i]);
}

// The most significant byte comes first in the file.
void PnmLoader::readRawWords(uint8_t* line) {
    raw_.resize(samples_ * 2);
    file_.readExactly(raw_.data(), raw_.size());
    for (size_t i = 0; i < samples_; ++i) store(line, i, raw_[2 * i] << 8 | raw_[2 * i + 1]);
}

}  // namespace pnm
