// Writes AVIF and HEIC files: pictures that AV1 and HEVC encoders have compressed.
#pragma once

#include <vector>

#include "formats/common/saver.h"
#include "formats/heif/libheif.h"

namespace heif {

struct Codec;

class Saver : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  protected:
    explicit Saver(const Codec& codec) : codec_(codec) {}

  private:
    void putSettings(bool grey);
    void makePicture(const formats::ImageToSave& image);

    const Codec& codec_;
    formats::OutputFile* file_ = nullptr;
    Owner<heif_context> context_;
    Owner<heif_encoder> encoder_;
    Owner<heif_encoding_options> options_;
    Owner<heif_color_profile_nclx> colors_;
    Owner<heif_image> picture_;
    struct Plane {
        uint8_t* line;
        int step;  // bytes to the next one
    };
    std::vector<Plane> planes_;  // of each channel
    std::vector<uint8_t> exif_;
    size_t width_ = 0;
    uint32_t most_ = 255;  // a sample's greatest value
};

class AvifSaver final : public Saver {
  public:
    AvifSaver();
};

class HeifSaver final : public Saver {
  public:
    HeifSaver();
};

}  // namespace heif
