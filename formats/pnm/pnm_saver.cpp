#include "formats/pnm/pnm_saver.h"

#include <charconv>
#include <cstring>
#include <iterator>
#include <utility>

#include "formats/settings/module_settings.h"
#include "pnm_capabilities.h"

namespace pnm {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr settings::Choice<bool> kForms[] = {{"raw", false}, {"plain", true}};

constexpr uint8_t kWhiteFrom = 128;  // grey samples from here on are white in a bitmap

constexpr size_t kLongestPlainLine = 70;

enum class Kind { kBitmap, kGrey, kColor, kPam };

// The file's ending chooses between the kinds that can hold the image. An image with alpha is
// always a PAM file, the only kind with room for it.
Kind kindFor(const ImageToSave& image) {
    const bool grey = image.colorSpace == VORN_CS_GRAY;
    if (!grey && image.colorSpace != VORN_CS_RGB) throw Failure{formats::kCannotSave};
    const std::string ending = formats::fileEnding(image.fileName);
    if (image.alpha || ending == "pam") return Kind::kPam;
    if (ending == "ppm") return Kind::kColor;
    if (!grey && (ending == "pgm" || ending == "pbm")) throw Failure{formats::kCannotSave};
    if (ending == "pbm") return Kind::kBitmap;
    return grey ? Kind::kGrey : Kind::kColor;
}

std::string pamHeader(const ImageToSave& image, const std::string& maxValue) {
    std::string type = image.colorSpace == VORN_CS_GRAY ? "GRAYSCALE" : "RGB";
    if (image.alpha) type += "_ALPHA";
    return "P7\nWIDTH " + std::to_string(image.width) + "\nHEIGHT " + std::to_string(image.height) +
           "\nDEPTH " + std::to_string(image.channels) + "\nMAXVAL " + maxValue + "\nTUPLTYPE " +
           type + "\nENDHDR\n";
}

std::string headerFor(Kind kind, bool plain, const ImageToSave& image) {
    const std::string maxValue = image.bytesPerChannel == 2 ? "65535" : "255";
    if (kind == Kind::kPam) return pamHeader(image, maxValue);
    const std::string size = std::to_string(image.width) + ' ' + std::to_string(image.height);
    const int raw = kind == Kind::kBitmap ? 4 : kind == Kind::kGrey ? 5 : 6;
    const std::string head = 'P' + std::to_string(plain ? raw - 3 : raw) + '\n' + size + '\n';
    return kind == Kind::kBitmap ? head : head + maxValue + '\n';
}

}  // namespace

formats::LineLayout PnmSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    const Kind kind = kindFor(image);
    file_ = &file;
    const settings::ModuleSettings set("pnm", VORN_SAVER, kPnmCapabilities);
    plain_ = set.choice("Form", kForms) && kind != Kind::kPam;  // PAM has no plain form
    formats::LineLayout layout{image.channels, image.bytesPerChannel};
    if (kind == Kind::kBitmap) layout.bytesPerChannel = 1;

    form_ = kind == Kind::kBitmap         ? Form::kBits
            : layout.bytesPerChannel == 2 ? Form::kWords
                                          : Form::kBytes;
    greyAsColor_ = kind == Kind::kColor && image.channels == 1;
    samples_ = static_cast<size_t>(image.width) * static_cast<size_t>(image.channels);
    const std::string header = headerFor(kind, plain_, image);
    file.write(header.data(), header.size());
    return layout;
}

void PnmSaver::writeLine(const uint8_t* line) {
    if (plain_) {
        writeNumbers(line);
        return;
    }
    if (form_ == Form::kBits) {
        packBits(line);
    } else if (greyAsColor_) {
        widenGrey(line);
    } else if (form_ == Form::kWords) {
        out_.assign(line, line + samples_ * 2);
    } else {
        file_->write(line, samples_);
        return;
    }
    if (form_ == Form::kWords) swapWords();
    file_->write(out_.data(), out_.size());
}

uint32_t PnmSaver::number(const uint8_t* line, size_t sample) const {
    if (form_ == Form::kBits) return line[sample] < kWhiteFrom;
    if (form_ == Form::kBytes) return line[sample];
    return line[2 * sample] | static_cast<uint32_t>(line[2 * sample + 1]) << 8;
}

// Each line of the picture begins a line of the file, and goes on in the next where it is too long.
void PnmSaver::writeNumbers(const uint8_t* line) {
    text_.clear();
    size_t lineStart = 0;
    const size_t repeats = greyAsColor_ ? 3 : 1;
    for (size_t i = 0; i < samples_ * repeats; ++i) {
        char digits[8];
        const auto end =
            std::to_chars(std::begin(digits), std::end(digits), number(line, i / repeats)).ptr;
        const auto length = static_cast<size_t>(end - digits);
        if (text_.size() > lineStart) {
            const bool fits = text_.size() + 1 + length - lineStart <= kLongestPlainLine;
            text_ += fits ? ' ' : '\n';
            if (!fits) lineStart = text_.size();
        }
        text_.append(digits, length);
    }
    text_ += '\n';
    file_->write(text_.data(), text_.size());
}

// Eight pixels a byte, the leftmost in the highest bit, and 1 is black.
void PnmSaver::packBits(const uint8_t* line) {
    out_.assign((samples_ + 7) / 8, 0);
    for (size_t i = 0; i < samples_; ++i) {
        if (line[i] < kWhiteFrom) out_[i / 8] |= static_cast<uint8_t>(0x80 >> i % 8);
    }
}

void PnmSaver::widenGrey(const uint8_t* line) {
    const size_t bytes = form_ == Form::kWords ? 2 : 1;
    out_.resize(samples_ * 3 * bytes);
    for (size_t i = 0; i < samples_ * 3; ++i)
        std::memcpy(&out_[i * bytes], line + i / 3 * bytes, bytes);
}

// The most significant byte comes first in the file.
void PnmSaver::swapWords() {
    for (size_t i = 0; i + 1 < out_.size(); i += 2) std::swap(out_[i], out_[i + 1]);
}

}  // namespace pnm
