#include "formats/heif/heif_saver.h"

#include <cstring>
#include <optional>
#include <string>

#include "avif_capabilities.h"
#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/settings/module_settings.h"
#include "heif_capabilities.h"

namespace heif {

using formats::Failure;

// What one saver does otherwise than the other.
struct Codec {
    const char* name;
    const char* capabilities;
    heif_compression_format format;
    int32_t mostPixels;  // across and down
    int mostBits;  // of samples of 16 bits. AV1 with 10 bits makes some versions of libheif fail
    void (*putEffort)(heif_encoder*, int);
};

namespace {

constexpr int kFinestQuality = 90;  // from here on colours keep their resolution

void check(const heif_error& error) { heif::check(error, formats::kCannotSave); }

void putAv1Effort(heif_encoder* encoder, int effort) {
    check(heif_encoder_set_parameter_integer(encoder, "speed", 9 - effort));
}

void putHevcEffort(heif_encoder* encoder, int effort) {
    constexpr const char* kPresets[] = {"ultrafast", "superfast", "veryfast", "faster",
                                        "fast",      "medium",    "slow",     "slower",
                                        "veryslow",  "placebo"};
    check(heif_encoder_set_parameter_string(encoder, "preset", kPresets[effort]));
    // Long strips of few lines suit none of the levels that x265 wants to name. Another encoder
    // doesn't know this parameter.
    heif_encoder_set_parameter(encoder, "x265:allow-non-conformance", "1");
}

constexpr Codec kAv1{"avif", kAvifCapabilities, heif_compression_AV1, 65536, 12, putAv1Effort};
constexpr Codec kHevc{"heif", kHeifCapabilities, heif_compression_HEVC, 65528, 10, putHevcEffort};

constexpr settings::Choice<const char*> kSubsamplings[] = {
    {"auto", nullptr}, {"444", "444"}, {"422", "422"}, {"420", "420"}};

// Where the bytes go, and why they didn't: no exception crosses libheif.
struct Target {
    formats::OutputFile* file;
    std::optional<Failure> failure;

    static heif_error write(heif_context*, const void* bytes, size_t count, void* self) {
        auto& target = *static_cast<Target*>(self);
        try {
            target.file->write(bytes, count);
            return {heif_error_Ok, heif_suberror_Unspecified, ""};
        } catch (const Failure& caught) {
            target.failure = caught;
        } catch (...) {
            target.failure = Failure{formats::kOutOfMemory};
        }
        return {heif_error_Encoding_error, heif_suberror_Cannot_write_output_data, ""};
    }
};

}  // namespace

AvifSaver::AvifSaver() : Saver(kAv1) {}
HeifSaver::HeifSaver() : Saver(kHevc) {}

formats::LineLayout Saver::open(const formats::ImageToSave& image, formats::OutputFile& file) {
    const bool grey = image.colorSpace == VORN_CS_GRAY;
    if ((!grey && image.colorSpace != VORN_CS_RGB) || image.width > codec_.mostPixels ||
        image.height > codec_.mostPixels)
        throw Failure{formats::kCannotSave};
    if (!heif_have_encoder_for_format(codec_.format)) throw Failure{formats::kNoEncoder};
    file_ = &file;
    context_ = made(heif_context_alloc());
    heif_encoder* encoder = nullptr;
    check(heif_context_get_encoder_for_format(context_.get(), codec_.format, &encoder));
    encoder_.reset(encoder);
    options_ = made(heif_encoding_options_alloc());
    colors_ = made(heif_nclx_color_profile_alloc());
    putSettings(grey);
    makePicture(image);
    exif_ = formats::exifBlock(image, {.orientation = false});
    return {image.channels, image.bytesPerChannel};
}

void Saver::putSettings(bool grey) {
    const settings::ModuleSettings set(codec_.name, VORN_SAVER, codec_.capabilities);
    const int quality = set.number("Quality");
    const bool lossless = set.isOn("Lossless");
    check(heif_encoder_set_lossy_quality(encoder_.get(), quality));
    check(heif_encoder_set_lossless(encoder_.get(), lossless));
    codec_.putEffort(encoder_.get(), set.number("Effort"));
    const char* subsampling = set.choice("Subsampling", kSubsamplings);
    if (lossless)
        subsampling = "444";
    else if (!subsampling)
        subsampling = quality >= kFinestQuality ? "444" : "420";
    check(heif_encoder_set_parameter_string(encoder_.get(), "chroma", subsampling));
    // Red, green and blue themselves are compressed where nothing may be lost by converting them;
    // the file then has to say so.
    if (!lossless || grey) return;
    colors_->matrix_coefficients = heif_matrix_coefficients_RGB_GBR;
    colors_->full_range_flag = 1;
    options_->output_nclx_profile = colors_.get();
    options_->macOS_compatibility_workaround_no_nclx_profile = 0;
}

void Saver::makePicture(const formats::ImageToSave& image) {
    const bool grey = image.colorSpace == VORN_CS_GRAY;
    const int bits = image.bytesPerChannel == 2 ? codec_.mostBits : 8;
    formats::heldBytes(image.height, int64_t{image.width} * image.channels * image.bytesPerChannel);
    heif_image* picture = nullptr;
    check(heif_image_create(image.width, image.height,
                            grey ? heif_colorspace_monochrome : heif_colorspace_RGB,
                            grey ? heif_chroma_monochrome : heif_chroma_444, &picture));
    picture_.reset(picture);
    check(heif_image_set_nclx_color_profile(picture, colors_.get()));
    std::vector<heif_channel> channels{heif_channel_R, heif_channel_G, heif_channel_B};
    if (grey) channels = {heif_channel_Y};
    if (image.alpha) channels.push_back(heif_channel_Alpha);
    for (const heif_channel channel : channels) {
        check(heif_image_add_plane(picture, channel, image.width, image.height, bits));
        Plane plane{};
        plane.line = heif_image_get_plane(picture, channel, &plane.step);
        planes_.push_back(plane);
    }
    width_ = static_cast<size_t>(image.width);
    most_ = (1u << bits) - 1;
}

void Saver::writeLine(const uint8_t* line) {
    const size_t channels = planes_.size();
    for (size_t c = 0; c < channels; ++c) {
        Plane& plane = planes_[c];
        for (size_t x = 0; x < width_; ++x) {
            const size_t from = x * channels + c;
            if (most_ == 255) {
                plane.line[x] = line[from];
                continue;
            }
            uint16_t sample = 0;
            std::memcpy(&sample, line + from * 2, 2);
            sample = static_cast<uint16_t>((sample * most_ + 32767) / 65535);
            std::memcpy(plane.line + x * 2, &sample, 2);
        }
        plane.line += plane.step;
    }
}

void Saver::finish() {
    heif_image_handle* encoded = nullptr;
    check(heif_context_encode_image(context_.get(), picture_.get(), encoder_.get(), options_.get(),
                                    &encoded));
    const Owner<heif_image_handle> handle(encoded);
    picture_.reset();
    if (!exif_.empty())
        check(heif_context_add_exif_metadata(context_.get(), encoded, exif_.data(),
                                             static_cast<int>(exif_.size())));
    Target target{file_, {}};
    heif_writer writer{1, &Target::write};
    const heif_error error = heif_context_write(context_.get(), &writer, &target);
    if (target.failure) throw *target.failure;
    check(error);
}

}  // namespace heif
