// Writes PNM files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/common/saver.h"

namespace pnm {

class PnmSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;

  private:
    // How the samples that come become the bytes of the file.
    enum class Form { kBits, kBytes, kWords };

    void writeNumbers(const uint8_t* line);
    uint32_t number(const uint8_t* line, size_t sample) const;
    void packBits(const uint8_t* line);
    void widenGrey(const uint8_t* line);
    void swapWords();

    formats::OutputFile* file_ = nullptr;
    Form form_ = Form::kBytes;
    bool plain_ = false;        // samples are written as decimal numbers
    bool greyAsColor_ = false;  // a PPM file made from grey samples
    size_t samples_ = 0;        // that come with one line
    std::vector<uint8_t> out_;
    std::string text_;  // a line of the picture in numbers
};

}  // namespace pnm
