#include "formats/webp/webp_loader.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"

namespace webp {
namespace {

using formats::Failure;

constexpr size_t kHeadSize = 12;
constexpr std::string_view kExifName{"Exif\0\0", 6};  // some programs repeat JPEG's mark

struct Releaser {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
    void operator()(WebPAnimDecoder* decoder) const { WebPAnimDecoderDelete(decoder); }
};
using Demuxer = std::unique_ptr<WebPDemuxer, Releaser>;
using AnimationDecoder = std::unique_ptr<WebPAnimDecoder, Releaser>;

void check(VP8StatusCode status) {
    switch (status) {
        case VP8_STATUS_OK:
            return;
        case VP8_STATUS_OUT_OF_MEMORY:
            throw Failure{formats::kOutOfMemory};
        case VP8_STATUS_UNSUPPORTED_FEATURE:
            throw Failure{formats::kUnsupported};
        default:
            throw Failure{formats::kDamaged};
    }
}

std::vector<uint8_t> contentOf(formats::InputFile& file) {
    std::vector<uint8_t> bytes(kHeadSize);
    const size_t got = file.read(bytes.data(), kHeadSize);
    const std::string_view head(reinterpret_cast<const char*>(bytes.data()), got);
    if (got != kHeadSize || head.substr(0, 4) != "RIFF" || head.substr(8) != "WEBP")
        throw Failure{formats::kNotThisFormat};
    bytes.resize(std::max(formats::heldBytes(file.size(), 1), kHeadSize));
    file.readExactly(&bytes[kHeadSize], bytes.size() - kHeadSize);
    return bytes;
}

}  // namespace

formats::Description WebpLoader::open(formats::InputFile file) {
    file_ = contentOf(file);
    WebPBitstreamFeatures features;
    check(WebPGetFeatures(file_.data(), file_.size(), &features));
    width_ = features.width;
    height_ = features.height;
    animated_ = features.has_animation != 0;
    channels_ = features.has_alpha || animated_ ? 4 : 3;

    formats::Description image;
    image.width = width_;
    image.height = height_;
    describeChunks(image);
    // Frames without alpha can leave parts of the picture free.
    if (animated_ && !features.has_alpha) {
        decode();
        if (isOpaque()) leaveOutAlpha();
    }
    image.channels = channels_;
    image.alpha = channels_ == 4;
    return image;
}

bool WebpLoader::isOpaque() const {
    for (size_t at = 3; at < picture_.size(); at += 4) {
        if (picture_[at] != 255) return false;
    }
    return true;
}

void WebpLoader::leaveOutAlpha() {
    for (size_t from = 0, to = 0; from < picture_.size(); from += 4, to += 3)
        std::copy_n(&picture_[from], 3, &picture_[to]);
    channels_ = 3;
}

void WebpLoader::describeChunks(formats::Description& image) {
    const WebPData data{file_.data(), file_.size()};
    const Demuxer demuxer(WebPDemux(&data));
    if (!demuxer) throw Failure{formats::kDamaged};
    const auto frames =
        animated_ ? static_cast<int32_t>(WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT)) : 1;
    if (wishes().page < 1 || wishes().page > frames) throw Failure{formats::kNoSuchPage};
    if (animated_) {
        image.tags.number(ITAG_PageNumber, wishes().page);
        image.tags.number(ITAG_PageCount, frames);
    }
    WebPChunkIterator chunk;
    if (!WebPDemuxGetChunk(demuxer.get(), "EXIF", 1, &chunk)) return;
    std::string_view block(reinterpret_cast<const char*>(chunk.chunk.bytes), chunk.chunk.size);
    if (block.substr(0, kExifName.size()) == kExifName) block.remove_prefix(kExifName.size());
    const formats::Exif exif =
        formats::readExif(reinterpret_cast<const uint8_t*>(block.data()), block.size());
    WebPDemuxReleaseChunkIterator(&chunk);
    describe(exif, image);
}

void WebpLoader::readLine(uint8_t* line) {
    if (picture_.empty()) decode();
    const auto lineBytes = static_cast<size_t>(width_ * channels_);
    std::copy_n(&picture_[sent_], lineBytes, line);
    sent_ += lineBytes;
}

void WebpLoader::decode() {
    picture_.resize(formats::heldBytes(height_, int64_t{width_} * channels_));
    if (animated_)
        decodeFrame();
    else
        decodeStill();
}

void WebpLoader::decodeStill() {
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config)) throw Failure{formats::kUnsupported};
    config.output.colorspace = channels_ == 4 ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = picture_.data();
    config.output.u.RGBA.stride = width_ * channels_;
    config.output.u.RGBA.size = picture_.size();
    const VP8StatusCode status = WebPDecode(file_.data(), file_.size(), &config);
    WebPFreeDecBuffer(&config.output);
    check(status);
}

// A frame is what is to be seen when it is shown: those before it are decoded too.
void WebpLoader::decodeFrame() {
    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options)) throw Failure{formats::kUnsupported};
    const WebPData data{file_.data(), file_.size()};
    const AnimationDecoder decoder(WebPAnimDecoderNew(&data, &options));
    if (!decoder) throw Failure{formats::kDamaged};
    uint8_t* frame = nullptr;
    int time = 0;
    for (int32_t page = 0; page < wishes().page; ++page) {
        if (!WebPAnimDecoderGetNext(decoder.get(), &frame, &time)) throw Failure{formats::kDamaged};
    }
    std::copy_n(frame, picture_.size(), picture_.begin());
}

}  // namespace webp
