// Writes PNG files.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "formats/common/saver.h"
#include "formats/png/png_session.h"

namespace settings {
class ModuleSettings;
}

namespace png {

class PngSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    static void writeBytes(png_structp png, png_bytep bytes, size_t count);
    static void flush(png_structp) {}
    void compress(const settings::ModuleSettings& set, bool indexed);
    void putPalette(const formats::ImageToSave& image);
    void holdPicture(const formats::ImageToSave& image);
    void writePicture();

    formats::OutputFile* file_ = nullptr;
    std::optional<Session> session_;
    size_t lineBytes_ = 0;
    std::vector<uint8_t> picture_;  // of an interlaced file, whose first pass needs all lines
    size_t held_ = 0;               // bytes of it that have come
};

}  // namespace png
