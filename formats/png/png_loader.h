// Reads PNG files.
#pragma once

#include <optional>
#include <vector>

#include "formats/common/loader.h"
#include "formats/png/png_session.h"

namespace png {

class PngLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    static void readBytes(png_structp png, png_bytep bytes, size_t count);
    void readBehindPixels();
    void readHead();
    void setTransformations(bool indexed);
    formats::Description describeImage(bool indexed);
    void readWholePicture();

    formats::InputFile file_;
    std::optional<Session> behind_;  // what stands there, until the picture is described
    std::optional<Session> session_;
    bool interlaced_ = false;
    size_t lineBytes_ = 0;
    int32_t line_ = 0;  // the next to deliver
    int32_t height_ = 0;
    std::vector<uint8_t> picture_;  // of an interlaced file
};

}  // namespace png
