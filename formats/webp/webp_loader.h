// Reads WebP files.
#pragma once

#include <vector>

#include "formats/common/loader.h"

namespace webp {

class WebpLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    void describeChunks(formats::Description& image);
    void decode();
    void decodeStill();
    void decodeFrame();
    bool isOpaque() const;
    void leaveOutAlpha();

    std::vector<uint8_t> file_;
    int32_t width_ = 0;
    int32_t height_ = 0;
    int32_t channels_ = 3;
    bool animated_ = false;
    std::vector<uint8_t> picture_;
    size_t sent_ = 0;  // bytes of it
};

}  // namespace webp
