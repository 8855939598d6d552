#include "formats/heif/av1_decoder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "formats/heif/decoders.h"

namespace heif {
namespace {

using formats::Failure;

void check(int result) {
    if (result == DAV1D_ERR(ENOMEM)) throw Failure{formats::kOutOfMemory};
    if (result < 0) throw Failure{formats::kDamaged};
}

heif_chroma chromaOf(Dav1dPixelLayout layout) {
    switch (layout) {
        case DAV1D_PIXEL_LAYOUT_I400:
            return heif_chroma_monochrome;
        case DAV1D_PIXEL_LAYOUT_I420:
            return heif_chroma_420;
        case DAV1D_PIXEL_LAYOUT_I422:
            return heif_chroma_422;
        default:
            return heif_chroma_444;
    }
}

}  // namespace

Av1Decoder::Av1Decoder() {
    Dav1dSettings settings;
    dav1d_default_settings(&settings);
    settings.logger.callback = nullptr;
    settings.max_frame_delay = 1;
    settings.all_layers = 0;
    settings.frame_size_limit = static_cast<unsigned>(
        std::clamp<int64_t>(mostCodedPixels(), 1, std::numeric_limits<int32_t>::max()));
    check(dav1d_open(&context_, &settings));
}

Av1Decoder::~Av1Decoder() {
    dav1d_picture_unref(&picture_);
    dav1d_data_unref(&data_);
    dav1d_close(&context_);
}

void Av1Decoder::push(std::span<const uint8_t> bytes) {
    if (bytes.empty()) throw Failure{formats::kDamaged};
    uint8_t* copy = dav1d_data_create(&data_, bytes.size());
    if (!copy) throw Failure{formats::kOutOfMemory};
    std::memcpy(copy, bytes.data(), bytes.size());
}

Decoded Av1Decoder::decode() {
    for (int result = -1, emptyTries = 0; result != 0;) {
        if (data_.sz > 0) {
            result = dav1d_send_data(context_, &data_);
            if (result != DAV1D_ERR(EAGAIN)) check(result);
        } else if (++emptyTries > 2) {  // the second one waits for what is still being decoded
            throw Failure{formats::kDamaged};
        }
        result = dav1d_get_picture(context_, &picture_);
        if (result != DAV1D_ERR(EAGAIN)) check(result);
    }
    const Dav1dSequenceHeader& head = *picture_.seq_hdr;
    const heif_chroma chroma = chromaOf(picture_.p.layout);
    const int across = chroma == heif_chroma_444 ? 1 : 2;
    const int down = chroma == heif_chroma_420 ? 2 : 1;
    Decoded decoded{chroma,
                    picture_.p.bpc,
                    {},
                    static_cast<uint16_t>(head.pri),
                    static_cast<uint16_t>(head.trc),
                    static_cast<uint16_t>(head.mtrx),
                    head.color_range != 0};
    for (size_t c = 0; c < 3; ++c)
        decoded.planes[c] = {static_cast<const uint8_t*>(picture_.data[c]),
                             picture_.stride[c > 0 ? 1 : 0],
                             c == 0 ? picture_.p.w : (picture_.p.w + across - 1) / across,
                             c == 0 ? picture_.p.h : (picture_.p.h + down - 1) / down};
    return decoded;
}

}  // namespace heif
