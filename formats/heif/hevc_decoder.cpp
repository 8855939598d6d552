#include "formats/heif/hevc_decoder.h"

#include "formats/common/big_endian.h"
#include "formats/heif/decoders.h"
#include "formats/heif/hevc_size.h"

namespace heif {
namespace {

using formats::Failure;

constexpr size_t kLengthSize = 4;

void check(de265_error result) {
    if (result == DE265_ERROR_OUT_OF_MEMORY) throw Failure{formats::kOutOfMemory};
    if (result != DE265_OK) throw Failure{formats::kDamaged};
}

heif_chroma chromaOf(de265_chroma chroma) {
    switch (chroma) {
        case de265_chroma_mono:
            return heif_chroma_monochrome;
        case de265_chroma_420:
            return heif_chroma_420;
        case de265_chroma_422:
            return heif_chroma_422;
        default:
            return heif_chroma_444;
    }
}

Decoded describe(const de265_image* image) {
    Decoded decoded{chromaOf(de265_get_chroma_format(image)),
                    de265_get_bits_per_pixel(image, 0),
                    {},
                    static_cast<uint16_t>(de265_get_image_colour_primaries(image)),
                    static_cast<uint16_t>(de265_get_image_transfer_characteristics(image)),
                    static_cast<uint16_t>(de265_get_image_matrix_coefficients(image)),
                    de265_get_image_full_range_flag(image) != 0};
    for (int c = 0; c < (decoded.chroma == heif_chroma_monochrome ? 1 : 3); ++c) {
        if (de265_get_bits_per_pixel(image, c) != decoded.bits)
            throw Failure{formats::kUnsupported};
        int step = 0;
        const uint8_t* samples = de265_get_image_plane(image, c, &step);
        decoded.planes[c] = {samples, step, de265_get_image_width(image, c),
                             de265_get_image_height(image, c)};
        if (decoded.planes[c].width <= 0 || decoded.planes[c].height <= 0)
            throw Failure{formats::kDamaged};
    }
    return decoded;
}

}  // namespace

HevcDecoder::HevcDecoder() : context_(de265_new_decoder()) {
    if (!context_) throw Failure{formats::kOutOfMemory};
    de265_start_worker_threads(context_, 1);
}

HevcDecoder::~HevcDecoder() { de265_free_decoder(context_); }

void HevcDecoder::push(std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        if (bytes.size() < kLengthSize) throw Failure{formats::kDamaged};
        const size_t length = formats::bigEndian(bytes.data(), kLengthSize);
        bytes = bytes.subspan(kLengthSize);
        if (length > bytes.size()) throw Failure{formats::kDamaged};
        const auto unit = bytes.first(length);
        // The decoder makes tables for the whole picture as soon as it has been told the size.
        if (codedPixels(unit) > mostCodedPixels()) throw Failure{formats::kDamaged};
        check(de265_push_NAL(context_, unit.data(), static_cast<int>(length), 0, nullptr));
        bytes = bytes.subspan(length);
    }
    check(de265_flush_data(context_));
}

Decoded HevcDecoder::decode() {
    de265_error result = DE265_OK;
    for (int more = 1; more != 0 && result == DE265_OK;) {
        result = de265_decode(context_, &more);
        if (const de265_image* image = de265_peek_next_picture(context_)) return describe(image);
    }
    check(result);
    throw Failure{formats::kDamaged};
}

}  // namespace heif
