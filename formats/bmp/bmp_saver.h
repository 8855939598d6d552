// Writes BMP files.
#pragma once

#include <vector>

#include "formats/common/saver.h"

namespace bmp {

class BmpSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    void flush();

    formats::OutputFile* file_ = nullptr;
    size_t width_ = 0;
    size_t channels_ = 0;    // that come
    size_t pixelBytes_ = 0;  // that are written
    size_t lineBytes_ = 0;
    int64_t place_ = 0;           // in the file, of the line above those that are held
    std::vector<uint8_t> block_;  // lines that go to the file together, the last first
    size_t start_ = 0;            // of the lines in the block
};

}  // namespace bmp
