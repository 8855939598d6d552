// What a loader tells the host about its image.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace formats {

// Image tags beside those of the data format. Owns the values that the words point at.
class InfoTags {
  public:
    void number(uint32_t id, int32_t value);
    void text(uint32_t id, std::string value);
    // The colours of "CMAPPED" pixels: red, green and blue of each entry in turn, a byte each.
    void palette(const std::vector<uint8_t>& rgb);

    // (id, value) words, without an end.
    const std::vector<VORN_Word>& words() const { return words_; }

  private:
    struct PaletteDeleter {
        void operator()(VORN_Palette* palette) const { VORN_H_FreePaletteData(palette); }
    };

    std::vector<VORN_Word> words_;
    std::deque<std::string> texts_;  // never moves what it holds
    std::unique_ptr<VORN_Palette, PaletteDeleter> palette_;
};

struct Description {
    int32_t width = 0;
    int32_t height = 0;
    int32_t channels = 0;         // alpha included
    int32_t bytesPerChannel = 1;  // 1 or 2; 16-bit samples have their least significant byte first
    int32_t significantBits = 0;  // of the samples beside alpha; 0: all of them
    bool alpha = false;           // the last channel is alpha
    int32_t colorSpace = VORN_CS_RGB;
    int32_t orientation = 0;  // ITAG_Orientation: 0 when the lines stand as they are to be seen
    InfoTags tags;

    // One line: pixel by pixel, the channels of a pixel side by side.
    int32_t lineBytes() const { return width * channels * bytesPerChannel; }
};

// Sends the description as the answer to the host's question. Throws when the image can't be sent:
// a size that the library doesn't know, or a line that doesn't fit a block.
void announce(const Description& description);

}  // namespace formats
