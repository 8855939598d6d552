#include "formats/webp/webp_saver.h"

#include <webp/mux.h>

#include <memory>

#include "formats/common/exif.h"
#include "formats/settings/module_settings.h"
#include "webp_capabilities.h"

namespace webp {
namespace {

using formats::Failure;
using formats::ImageToSave;

struct Releaser {
    void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

WebPConfig storedConfig() {
    const settings::ModuleSettings set("webp", VORN_SAVER, kWebpCapabilities);
    WebPConfig config;
    if (!WebPConfigInit(&config)) throw Failure{formats::kCannotSave};
    config.quality = static_cast<float>(set.number("Quality"));
    config.lossless = set.isOn("Lossless") ? 1 : 0;
    config.exact = config.lossless;  // colours that can't be seen through alpha are kept
    config.method = set.number("Effort");
    if (!WebPValidateConfig(&config)) throw Failure{formats::kBadOption};
    return config;
}

}  // namespace

formats::LineLayout WebpSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    if (image.colorSpace != VORN_CS_RGB || image.width > WEBP_MAX_DIMENSION ||
        image.height > WEBP_MAX_DIMENSION)
        throw Failure{formats::kCannotSave};
    config_ = storedConfig();
    exif_ = formats::exifBlock(image);
    file_ = &file;
    channels_ = image.channels;
    if (!WebPPictureInit(&picture_)) throw Failure{formats::kCannotSave};
    picture_.use_argb = 1;
    picture_.width = image.width;
    picture_.height = image.height;
    if (!WebPPictureAlloc(&picture_)) throw Failure{formats::kOutOfMemory};
    return {channels_, 1};
}

void WebpSaver::writeLine(const uint8_t* line) {
    uint32_t* pixel = picture_.argb + static_cast<ptrdiff_t>(line_++) * picture_.argb_stride;
    for (int32_t x = 0; x < picture_.width; ++x, line += channels_) {
        const uint32_t alpha = channels_ == 4 ? line[3] : 255;
        *pixel++ = alpha << 24 | static_cast<uint32_t>(line[0]) << 16 |
                   static_cast<uint32_t>(line[1]) << 8 | line[2];
    }
}

void WebpSaver::finish() {
    WebPMemoryWriter encoded;
    WebPMemoryWriterInit(&encoded);
    const std::unique_ptr<WebPMemoryWriter, void (*)(WebPMemoryWriter*)> owner(
        &encoded, WebPMemoryWriterClear);
    picture_.writer = WebPMemoryWrite;
    picture_.custom_ptr = &encoded;
    if (!WebPEncode(&config_, &picture_)) {
        const bool noMemory = picture_.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ||
                              picture_.error_code == VP8_ENC_ERROR_BITSTREAM_OUT_OF_MEMORY;
        if (noMemory) throw Failure{formats::kOutOfMemory};
        throw Failure{formats::kCannotSave};
    }
    if (exif_.empty())
        file_->write(encoded.mem, encoded.size);
    else
        writeWithExif(encoded);
}

void WebpSaver::writeWithExif(const WebPMemoryWriter& encoded) {
    const std::unique_ptr<WebPMux, Releaser> mux(WebPMuxNew());
    const WebPData image{encoded.mem, encoded.size};
    const WebPData exif{exif_.data(), exif_.size()};
    WebPData whole{};
    if (!mux || WebPMuxSetImage(mux.get(), &image, 0) != WEBP_MUX_OK ||
        WebPMuxSetChunk(mux.get(), "EXIF", &exif, 0) != WEBP_MUX_OK ||
        WebPMuxAssemble(mux.get(), &whole) != WEBP_MUX_OK)
        throw Failure{formats::kOutOfMemory};
    const std::unique_ptr<WebPData, void (*)(WebPData*)> owner(&whole, WebPDataClear);
    file_->write(whole.bytes, whole.size);
}

}  // namespace webp
