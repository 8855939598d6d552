// Writes GIF files of one frame.
#pragma once

#include <gif_lib.h>

#include <memory>
#include <string>
#include <vector>

#include "formats/common/saver.h"

namespace gif {

class GifSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    struct Closer {
        void operator()(GifFileType* gif) const { EGifCloseFile(gif, nullptr); }
    };

    static int writeBytes(GifFileType* gif, const GifByteType* bytes, int count);
    void check(bool succeeded) const;
    void writeHead(const std::vector<uint8_t>& rgb, int transparent);
    void writeIndices(const uint8_t* line);

    formats::OutputFile* file_ = nullptr;
    formats::Failure failure_{formats::kCannotSave};
    int32_t width_ = 0;
    int32_t height_ = 0;
    size_t channels_ = 0;
    std::string comment_;
    uint8_t aspect_ = 0;  // as the file has it
    std::unique_ptr<GifFileType, Closer> gif_;
    std::vector<uint8_t> line_;     // giflib changes what it is given
    bool collecting_ = false;       // colours, of which the palette is made at the end
    std::vector<uint8_t> picture_;  // their lines
};

}  // namespace gif
