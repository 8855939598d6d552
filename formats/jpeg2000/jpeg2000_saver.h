// Writes JPEG 2000 files: JP2, or codestreams without boxes, by the file's ending.
#pragma once

#include <optional>
#include <vector>

#include "formats/common/saver.h"
#include "formats/jpeg2000/openjpeg.h"

namespace jpeg2000 {

class Jpeg2000Saver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    void check(bool succeeded) const;
    void readSettings(opj_cparameters_t& parameters);
    void start(opj_cparameters_t& parameters);
    void writeTiles();

    formats::OutputFile* file_ = nullptr;
    size_t boxes_ = 0;  // bytes before the codestream
    std::optional<Stream> stream_;
    Codec codec_;
    Image image_;

    size_t width_ = 0;
    size_t height_ = 0;
    size_t channels_ = 0;
    size_t bytes_ = 1;
    size_t tileWidth_ = 0;
    size_t tileHeight_ = 0;

    std::vector<uint8_t> lines_;  // as many as a row of tiles has
    size_t held_ = 0;             // bytes of them
    std::vector<uint8_t> tile_;   // the samples of each channel by themselves
    uint32_t nextTile_ = 0;
};

}  // namespace jpeg2000
