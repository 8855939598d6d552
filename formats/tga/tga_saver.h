// Writes TGA files.
#pragma once

#include <vector>

#include "formats/common/saver.h"

namespace tga {

class TgaSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    void arrange(const uint8_t* line);
    void writeRuns();
    void write(const std::vector<uint8_t>& bytes);

    formats::OutputFile* file_ = nullptr;
    size_t width_ = 0;
    size_t channels_ = 0;    // that come
    size_t pixelBytes_ = 0;  // that are written
    bool runLength_ = false;
    std::vector<uint8_t> pixels_;
    std::vector<uint8_t> runs_;
    std::vector<uint8_t> extension_;  // behind the pixels
    uint64_t written_ = 0;
};

}  // namespace tga
