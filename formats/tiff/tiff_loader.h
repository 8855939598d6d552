// Reads TIFF files.
#pragma once

#include <optional>
#include <vector>

#include "formats/common/loader.h"
#include "formats/tiff/tiff_file.h"

namespace tiff_format {

class TiffLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    uint16_t field(ttag_t tag) const;
    void openPage(formats::Description& image);
    void readLayout();
    bool chooseColors(formats::Description& image);
    void chooseAlpha(formats::Description& image);
    void describePalette(formats::Description& image);
    void describeTags(formats::Description& image);
    void readWholePicture(formats::Description& image);
    void preparePieces();
    void readPieces();
    void readStrip(uint32_t strip, uint8_t* piece);
    void unpack(const uint8_t* from, size_t pixels, size_t stride, size_t count, uint8_t* to) const;
    void finishLine(uint8_t* line) const;
    template <class Sample>
    void paint(uint8_t* line) const;

    std::optional<TiffFile> file_;
    int32_t line_ = 0;  // the next to deliver

    // What the file says.
    uint32_t width_ = 0;
    uint32_t height_ = 0;
    uint16_t bits_ = 1;
    uint16_t samples_ = 1;  // to a pixel
    uint16_t photometric_ = 0;
    bool planes_ = false;  // each sample of its own
    bool tiles_ = false;

    // What is handed on.
    size_t channels_ = 1;
    size_t bytes_ = 1;
    bool inverted_ = false;        // 0 is white
    bool multiplied_ = false;      // colours have been multiplied by alpha
    std::vector<uint8_t> inks_;    // a line of CMYK of which RGB is made
    std::vector<uint16_t> scale_;  // of samples of less than 8 or 16 bits

    // A row of tiles, or the strips of all planes, or one line: what is decoded at once.
    uint32_t pieceWidth_ = 0;
    uint32_t pieceHeight_ = 0;
    size_t pieceLine_ = 0;  // bytes of one line of a piece
    size_t pieceSize_ = 0;
    std::vector<uint8_t> pieces_;

    std::vector<uint32_t> picture_;  // what libtiff has turned into RGB with alpha
};

}  // namespace tiff_format
