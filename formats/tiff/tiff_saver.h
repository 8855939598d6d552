// Writes TIFF files.
#pragma once

#include <optional>
#include <vector>

#include "formats/common/saver.h"
#include "formats/tiff/tiff_file.h"

namespace tiff_format {

class TiffSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    void putColors(const formats::ImageToSave& image);
    void putPalette(const formats::ImageToSave& image);
    void putTags(const formats::ImageToSave& image);

    std::optional<TiffFile> file_;
    std::vector<uint8_t> out_;  // libtiff's predictor works in place
    uint32_t line_ = 0;
};

}  // namespace tiff_format
