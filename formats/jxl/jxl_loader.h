// Reads JPEG XL files.
#pragma once

#include <jxl/decode.h>

#include <memory>
#include <vector>

#include "formats/common/loader.h"
#include "formats/jxl/jxl_threads.h"

namespace jxl_format {  // libjxl has a namespace jxl

class JxlLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    struct Releaser {
        void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
    };

    void start(int events);
    JxlDecoderStatus step() const;
    std::vector<uint8_t> readHead(formats::Description& image, int32_t& frames);
    void chooseFormat(formats::Description& image);
    void prepareSamples(uint32_t bits);
    void chooseColors() const;
    void decode();

    std::vector<uint8_t> file_;
    Threads threads_;
    std::unique_ptr<JxlDecoder, Releaser> decoder_;
    JxlBasicInfo info_{};
    JxlPixelFormat format_{};
    std::vector<uint8_t> picture_;
    std::vector<uint16_t> exact_;  // what the library's samples should be; empty: what they are
    size_t lineBytes_ = 0;
    size_t sent_ = 0;  // bytes of the picture
};

}  // namespace jxl_format
