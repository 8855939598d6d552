// Writes JPEG XL files.
#pragma once

#include <jxl/encode.h>

#include <memory>
#include <vector>

#include "formats/common/saver.h"
#include "formats/jxl/jxl_threads.h"

namespace jxl_format {

class JxlSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    struct Releaser {
        void operator()(JxlEncoder* encoder) const { JxlEncoderDestroy(encoder); }
    };

    void check(JxlEncoderStatus status) const;
    void describe(const formats::ImageToSave& image);
    void putExif(const std::vector<uint8_t>& block) const;
    void readSettings();

    formats::OutputFile* file_ = nullptr;
    Threads threads_;
    std::unique_ptr<JxlEncoder, Releaser> encoder_;
    JxlEncoderFrameSettings* frame_ = nullptr;  // the encoder's
    bool lossless_ = false;
    JxlPixelFormat format_{};
    std::vector<uint8_t> picture_;
    size_t lineBytes_ = 0;
    size_t held_ = 0;  // bytes of the picture
};

}  // namespace jxl_format
