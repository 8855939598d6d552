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
    void putQuality(int quality);
    void putTags(const formats::ImageToSave& image);
    void writeTiles();

    std::optional<TiffFile> file_;
    std::vector<uint8_t> out_;  // a line, or a row of tiles; libtiff's predictor works in place
    size_t pixelBytes_ = 0;
    size_t lineBytes_ = 0;
    bool lossy_ = false;
    uint32_t height_ = 0;
    uint32_t tile_ = 0;         // lines and columns of a tile; 0: the file has strips
    size_t tileLineBytes_ = 0;  // of one line of it
    uint32_t line_ = 0;
};

}  // namespace tiff_format
