#include "formats/heif/decoders.h"

#include <atomic>
#include <cstring>

#include "formats/heif/av1_decoder.h"
#include "formats/heif/decoder_plugin.h"
#include "formats/heif/hevc_decoder.h"
#include "formats/heif/libheif.h"

namespace heif {
namespace {

// libheif hands its plugins nothing that says for whom they decode, and calls them from several
// threads. A module program has one picture at a time.
std::atomic<int64_t> codedPixels{0};

void copyPlane(heif_image* image, heif_channel channel, const Decoded::Plane& from, int bits) {
    check(heif_image_add_plane(image, channel, from.width, from.height, bits), formats::kDamaged);
    int step = 0;
    uint8_t* to = heif_image_get_plane(image, channel, &step);
    if (!to) throw formats::Failure{formats::kOutOfMemory};
    const size_t bytes = static_cast<size_t>(from.width) * (bits > 8 ? 2 : 1);
    for (ptrdiff_t y = 0; y < from.height; ++y)
        std::memcpy(to + y * step, from.samples + y * from.step, bytes);
}

}  // namespace

void useOwnDecoders() {
    static const heif_decoder_plugin kAv1 =
        DecoderPlugin<Av1Decoder>::make<heif_compression_AV1>("vorn-av1");
    static const heif_decoder_plugin kHevc =
        DecoderPlugin<HevcDecoder>::make<heif_compression_HEVC>("vorn-hevc");
    static const bool kDone = heif_register_decoder_plugin(&kAv1).code == heif_error_Ok &&
                              heif_register_decoder_plugin(&kHevc).code == heif_error_Ok;
    if (!kDone) throw formats::Failure{formats::kUnsupported};
}

void limitCodedPixels(int64_t pixels) { codedPixels = pixels; }
int64_t mostCodedPixels() { return codedPixels; }

heif_image* pictureOf(const Decoded& decoded) {
    const bool grey = decoded.chroma == heif_chroma_monochrome;
    heif_image* made = nullptr;
    check(heif_image_create(decoded.planes[0].width, decoded.planes[0].height,
                            grey ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                            decoded.chroma, &made),
          formats::kDamaged);
    Owner<heif_image> image(made);
    constexpr heif_channel kChannels[] = {heif_channel_Y, heif_channel_Cb, heif_channel_Cr};
    for (size_t c = 0; c < (grey ? 1 : 3); ++c)
        copyPlane(made, kChannels[c], decoded.planes[c], decoded.bits);
    // Numbers that libheif doesn't know become "unspecified": the file's boxes may say it better.
    const auto colors = heif::made(heif_nclx_color_profile_alloc());
    heif_nclx_color_profile_set_color_primaries(colors.get(), decoded.primaries);
    heif_nclx_color_profile_set_transfer_characteristics(colors.get(), decoded.transfer);
    heif_nclx_color_profile_set_matrix_coefficients(colors.get(), decoded.matrix);
    colors->full_range_flag = decoded.fullRange;
    check(heif_image_set_nclx_color_profile(made, colors.get()), formats::kDamaged);
    return image.release();
}

heif_error errorOf(const formats::Failure& failure) {
    switch (failure.code) {
        case formats::kOutOfMemory:
            return {heif_error_Memory_allocation_error, heif_suberror_Unspecified, ""};
        case formats::kUnsupported:
            return {heif_error_Unsupported_feature, heif_suberror_Unspecified, ""};
        default:
            return {heif_error_Decoder_plugin_error, heif_suberror_Unspecified, ""};
    }
}

}  // namespace heif
