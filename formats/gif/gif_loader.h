// Reads GIF files.
#pragma once

#include <gif_lib.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/common/loader.h"
#include "formats/gif/wide_codes.h"

namespace gif {

class GifLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    struct Closer {
        void operator()(GifFileType* gif) const { DGifCloseFile(gif, nullptr); }
    };
    // What stands before a frame's lines.
    struct Frame {
        size_t left = 0;
        size_t top = 0;
        size_t width = 0;
        size_t height = 0;
        bool interlaced = false;
        bool lost = false;  // no data, nor anything behind it
        int transparent = NO_TRANSPARENT_COLOR;
        int disposal = DISPOSAL_UNSPECIFIED;
        std::vector<uint8_t> colors;  // red, green, blue
    };

    static int readBytes(GifFileType* gif, GifByteType* bytes, int count);
    void start();
    void check(bool succeeded) const;
    int32_t countFrames();
    void skipData();
    bool findFrame();
    void readExtension();
    void readFrameHead();
    std::vector<uint8_t> readFrame();
    void readFrameLine(uint8_t* line);
    void drawFrame();
    void disposeOfFrame();
    void paintPages();
    bool isSeeThrough() const;

    formats::InputFile file_;
    formats::Failure failure_{formats::kDamaged};
    std::unique_ptr<GifFileType, Closer> gif_;
    int lastByte_ = -1;                   // that giflib was given
    std::optional<WideCodes> wideCodes_;  // instead of giflib
    size_t width_ = 0;                    // of the whole picture
    size_t height_ = 0;
    Frame frame_;
    std::string comment_;
    size_t line_ = 0;               // the next to deliver
    size_t channels_ = 4;           // of the canvas that are delivered
    std::vector<uint8_t> indices_;  // of an interlaced frame
    std::vector<uint8_t> canvas_;   // red, green, blue, alpha; empty when indices are handed on
    std::vector<uint8_t> before_;   // the canvas before a frame that is to vanish
};

}  // namespace gif
