// Writes WebP files.
#pragma once

#include <webp/encode.h>

#include <vector>

#include "formats/common/saver.h"

namespace webp {

class WebpSaver final : public formats::Saver {
  public:
    WebpSaver() = default;
    ~WebpSaver() override { WebPPictureFree(&picture_); }

    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    void writeWithExif(const WebPMemoryWriter& encoded);

    formats::OutputFile* file_ = nullptr;
    WebPConfig config_{};
    WebPPicture picture_{};
    std::vector<uint8_t> exif_;
    int32_t channels_ = 3;
    int32_t line_ = 0;
};

}  // namespace webp
