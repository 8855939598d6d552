// Reads JPEG files.
#pragma once

#include <memory>
#include <vector>

#include "formats/common/loader.h"
#include "formats/jpeg/jpeg_session.h"

namespace jpeg {

class JpegLoader final : public formats::Loader {
  public:
    formats::Description open(formats::InputFile file) override;
    void readLine(uint8_t* line) override;

  private:
    // libjpeg's records, one behind the other as libjpeg reaches them from its callbacks.
    struct Decoder {
        jpeg_decompress_struct codec{};
        jpeg_source_mgr source{};
        jpeg_progress_mgr progress{};
        Session session;
        formats::InputFile file;
        std::vector<uint8_t> buffer;

        explicit Decoder(formats::InputFile input);
        ~Decoder() { jpeg_destroy_decompress(&codec); }
        static Decoder& of(j_decompress_ptr codec);
        static boolean fill(j_decompress_ptr codec);
        static void skip(j_decompress_ptr codec, long count);
        static void limitScans(j_common_ptr codec);
    };

    void readHead();
    void chooseColors(formats::Description& image);
    void describeMarkers(formats::Description& image);
    void chooseScale(int32_t orientation);

    std::unique_ptr<Decoder> decoder_;
    bool inverted_ = false;      // CMYK samples that count paper, not ink
    bool toRgb_ = false;         // CMYK that the host wants as RGB
    std::vector<uint8_t> cmyk_;  // one line of it
};

}  // namespace jpeg
