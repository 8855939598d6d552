// Reads HEIF and AVIF files.
#pragma once

#include <vector>

#include "formats/common/loader.h"
#include "formats/heif/libheif.h"

namespace heif {

class HeifLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    void openPage(formats::Description& image);
    void describeSamples(formats::Description& image);
    void describeExif(formats::Description& image) const;
    void decode();

    std::vector<uint8_t> file_;
    Owner<heif_context> context_;
    Owner<heif_image_handle> page_;
    Owner<heif_image> picture_;  // red, green, blue and perhaps alpha side by side
    size_t width_ = 0;
    size_t height_ = 0;
    size_t channels_ = 3;
    bool grey_ = false;
    bool alpha_ = false;
    int bits_ = 8;
    std::vector<uint16_t> scale_;  // of samples with more than 8 bits
    const uint8_t* next_ = nullptr;
    int step_ = 0;  // bytes to the next line
};

}  // namespace heif
