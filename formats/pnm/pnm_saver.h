// Writes PNM files in their raw forms.
#pragma once

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

    void packBits(const uint8_t* line);
    void widenGrey(const uint8_t* line);
    void swapWords();

    formats::OutputFile* file_ = nullptr;
    Form form_ = Form::kBytes;
    bool greyAsColor_ = false;  // a PPM file made from grey samples
    size_t samples_ = 0;        // that come with one line
    std::vector<uint8_t> out_;
};

}  // namespace pnm
