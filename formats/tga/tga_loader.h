// Reads TGA files.
#pragma once

#include <string>
#include <vector>

#include "formats/common/loader.h"
#include "formats/common/upward_lines.h"

namespace tga {

class TgaLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    void describeNotes(const std::string& note, formats::Description& image);
    void readMap(const uint8_t* head);
    void chooseColors(formats::Description& image);
    size_t pixelBytes() const { return (bits_ + 7) / 8; }
    void readPixel();
    void readRunPixel();
    void store(uint8_t*& line) const;

    formats::InputFile file_;
    int kind_ = 0;  // the image type without its run-length bit
    bool runLength_ = false;
    unsigned bits_ = 0;           // of a pixel
    unsigned alphaBits_ = 0;      // of a pixel
    bool upward_ = false;         // lines are read from the end of the file on
    formats::UpwardLines lines_;  // where they are
    size_t width_ = 0;
    size_t channels_ = 0;
    bool multiplied_ = false;   // the colours, by alpha
    bool indexed_ = false;      // indices are handed on, not colours
    std::vector<uint8_t> map_;  // red, green, blue, alpha of each entry
    bool mapAlpha_ = false;
    uint32_t firstEntry_ = 0;
    uint32_t pixel_ = 0;  // as it stands in the file
    int left_ = 0;        // pixels of the run
    bool repeating_ = false;
};

}  // namespace tga
