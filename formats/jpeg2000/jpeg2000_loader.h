// Reads JPEG 2000 files: JP2, and codestreams without boxes.
#pragma once

#include <memory>
#include <vector>

#include "formats/common/loader.h"
#include "formats/jpeg2000/codestream.h"
#include "formats/jpeg2000/decoder.h"

namespace jpeg2000 {

class Jpeg2000Loader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    enum class Colors { kAsTheyAre, kFromYcc, kFromInks };

    uint32_t chooseReduction(const Decoder& head, int32_t orientation) const;
    void look(formats::Description& image);
    std::unique_ptr<Decoder> cornerOf(const Decoder& head, uint32_t reduction);
    void chooseColors(const opj_image_t& seen, formats::Description& image);
    void useInks(formats::Description& image);
    void chooseAlpha(const opj_image_t& seen, formats::Description& image);
    void chooseBands();
    void nextBand();
    void fillRow(const opj_image_comp_t& component, std::vector<int32_t>& row) const;
    void convertRows();

    formats::InputFile file_;
    OPJ_CODEC_FORMAT format_ = OPJ_CODEC_JP2;
    CodestreamSize size_{};
    uint32_t reduction_ = 0;

    // What is handed on.
    Colors colors_ = Colors::kAsTheyAre;
    std::vector<uint32_t> sources_;  // the component of each row
    size_t width_ = 0;
    size_t channels_ = 0;
    size_t bytes_ = 1;
    int32_t full_ = 255;       // the largest sample
    bool multiplied_ = false;  // colours have been multiplied by alpha

    // Some rows of tiles are decoded together.
    uint32_t bandHeight_ = 0;  // on the grid; 0: the whole picture is one band
    uint32_t bandStart_ = 0;   // of the next
    std::unique_ptr<Decoder> band_;
    uint32_t row_ = 0;                        // of the band
    std::vector<std::vector<int32_t>> rows_;  // one line of the picture
};

}  // namespace jpeg2000
