// Writes PNG files.
#pragma once

#include <optional>

#include "formats/common/saver.h"
#include "formats/png/png_session.h"

namespace png {

class PngSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    static void writeBytes(png_structp png, png_bytep bytes, size_t count);
    static void flush(png_structp) {}
    void putPalette(const formats::ImageToSave& image);

    formats::OutputFile* file_ = nullptr;
    std::optional<Session> session_;
};

}  // namespace png
