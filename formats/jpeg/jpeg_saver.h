// Writes JPEG files.
#pragma once

#include <memory>
#include <vector>

#include "formats/common/saver.h"
#include "formats/jpeg/jpeg_session.h"

namespace jpeg {

class JpegSaver final : public formats::Saver {
  public:
    formats::LineLayout open(const formats::ImageToSave& image, formats::OutputFile& file) override;
    void writeLine(const uint8_t* line) override;
    void finish() override;

  private:
    struct Encoder {
        jpeg_compress_struct codec{};
        jpeg_destination_mgr destination{};
        Session session;
        formats::OutputFile* file;
        std::vector<uint8_t> buffer;

        explicit Encoder(formats::OutputFile& output);
        ~Encoder() { jpeg_destroy_compress(&codec); }
        static Encoder& of(j_compress_ptr codec);
        static void start(j_compress_ptr codec);
        static boolean empty(j_compress_ptr codec);
        static void end(j_compress_ptr codec);
    };

    void putResolution(const formats::ImageToSave& image);

    std::unique_ptr<Encoder> encoder_;
    std::vector<uint8_t> inverted_;  // one line of CMYK, as Adobe counts it
};

}  // namespace jpeg
