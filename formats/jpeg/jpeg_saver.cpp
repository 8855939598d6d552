#include "formats/jpeg/jpeg_saver.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "formats/common/exif.h"
#include "formats/settings/module_settings.h"
#include "jpeg_capabilities.h"

namespace jpeg {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr size_t kBufferSize = 65536;
constexpr int32_t kFineQuality = 90;  // from here on, colours keep the picture's full resolution
constexpr std::string_view kExifName{"Exif\0\0", 6};

struct Settings {
    int32_t quality = 0;
    int32_t progressive = 0;
    int32_t across = 1;  // pixels that share a colour sample
    int32_t down = 1;
};

enum class Subsampling { kAuto, k444, k422, k420 };
constexpr settings::Choice<Subsampling> kSubsamplings[] = {{"auto", Subsampling::kAuto},
                                                           {"444", Subsampling::k444},
                                                           {"422", Subsampling::k422},
                                                           {"420", Subsampling::k420}};

Settings storedSettings() {
    const settings::ModuleSettings set("jpeg", VORN_SAVER, kJpegCapabilities);
    Settings chosen;
    chosen.quality = set.number("Quality");
    chosen.progressive = set.isOn("Progressive");
    const Subsampling kind = set.choice("Subsampling", kSubsamplings);
    const bool fine =
        kind == Subsampling::k444 || (kind == Subsampling::kAuto && chosen.quality >= kFineQuality);
    chosen.across = fine ? 1 : 2;
    chosen.down = fine || kind == Subsampling::k422 ? 1 : 2;
    return chosen;
}

J_COLOR_SPACE colorsOf(const ImageToSave& image) {
    if (image.colorSpace == VORN_CS_GRAY && image.channels == 1) return JCS_GRAYSCALE;
    if (image.colorSpace == VORN_CS_RGB && image.channels == 3) return JCS_RGB;
    if (image.colorSpace == VORN_CS_CMYK && image.channels == 4) return JCS_CMYK;
    // Alpha has no place in a JPEG file.
    if (image.colorSpace == VORN_CS_GRAY && image.channels == 2) return JCS_GRAYSCALE;
    if (image.colorSpace == VORN_CS_RGB && image.channels == 4) return JCS_RGB;
    throw Failure{formats::kCannotSave};
}

void putSettings(jpeg_compress_struct& codec, const Settings& settings) {
    jpeg_set_quality(&codec, settings.quality, TRUE);
    if (codec.jpeg_color_space == JCS_YCbCr) {
        codec.comp_info[0].h_samp_factor = settings.across;
        codec.comp_info[0].v_samp_factor = settings.down;
    }
    if (settings.progressive) jpeg_simple_progression(&codec);
}

}  // namespace

JpegSaver::Encoder::Encoder(formats::OutputFile& output) : file(&output), buffer(kBufferSize) {
    codec.err = session.errors();
    session.run([this] { jpeg_create_compress(&codec); });
    codec.client_data = this;
    destination.init_destination = &start;
    destination.empty_output_buffer = &empty;
    destination.term_destination = &end;
    codec.dest = &destination;
}

JpegSaver::Encoder& JpegSaver::Encoder::of(j_compress_ptr codec) {
    return *static_cast<Encoder*>(codec->client_data);
}

void JpegSaver::Encoder::start(j_compress_ptr codec) {
    Encoder& self = of(codec);
    self.destination.next_output_byte = self.buffer.data();
    self.destination.free_in_buffer = self.buffer.size();
}

boolean JpegSaver::Encoder::empty(j_compress_ptr codec) {
    Encoder& self = of(codec);
    Session::callback(reinterpret_cast<j_common_ptr>(codec),
                      [&] { self.file->write(self.buffer.data(), self.buffer.size()); });
    start(codec);
    return TRUE;
}

void JpegSaver::Encoder::end(j_compress_ptr codec) {
    Encoder& self = of(codec);
    const size_t count = self.buffer.size() - self.destination.free_in_buffer;
    Session::callback(reinterpret_cast<j_common_ptr>(codec),
                      [&] { self.file->write(self.buffer.data(), count); });
}

formats::LineLayout JpegSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    const J_COLOR_SPACE colors = colorsOf(image);
    const Settings settings = storedSettings();
    if (image.width > JPEG_MAX_DIMENSION || image.height > JPEG_MAX_DIMENSION)
        throw Failure{formats::kCannotSave};
    std::vector<uint8_t> exif = formats::exifBlock(image, {.resolutionAlone = false});
    if (!exif.empty()) exif.insert(exif.begin(), kExifName.begin(), kExifName.end());

    encoder_ = std::make_unique<Encoder>(file);
    jpeg_compress_struct& codec = encoder_->codec;
    codec.image_width = static_cast<JDIMENSION>(image.width);
    codec.image_height = static_cast<JDIMENSION>(image.height);
    codec.in_color_space = colors;
    codec.input_components = colors == JCS_GRAYSCALE ? 1 : colors == JCS_RGB ? 3 : 4;
    encoder_->session.run([&] { jpeg_set_defaults(&codec); });
    encoder_->session.run([&] { putSettings(codec, settings); });
    putResolution(image);
    encoder_->session.run([&] {
        jpeg_start_compress(&codec, TRUE);
        if (!exif.empty())
            jpeg_write_marker(&codec, JPEG_APP0 + 1, exif.data(),
                              static_cast<unsigned>(exif.size()));
    });
    if (colors == JCS_CMYK) inverted_.resize(static_cast<size_t>(image.width) * 4);
    return {codec.input_components, 1};
}

void JpegSaver::putResolution(const ImageToSave& image) {
    jpeg_compress_struct& codec = encoder_->codec;
    const formats::Resolution dpi = formats::resolutionOf(image);
    const formats::Resolution density = formats::densityOf(image);
    constexpr int32_t kMost = 65535;
    if (dpi.x > 0) {
        codec.density_unit = 1;
        codec.X_density = static_cast<UINT16>(std::min(dpi.x, kMost));
        codec.Y_density = static_cast<UINT16>(std::min(dpi.y, kMost));
    } else if (density.x > 0 && density.x <= kMost && density.y <= kMost) {
        codec.density_unit = 0;
        codec.X_density = static_cast<UINT16>(density.x);
        codec.Y_density = static_cast<UINT16>(density.y);
    }
}

void JpegSaver::writeLine(const uint8_t* line) {
    // Files with the Adobe marker, which libjpeg writes for CMYK, count paper instead of ink.
    for (size_t i = 0; i < inverted_.size(); ++i)
        inverted_[i] = static_cast<uint8_t>(255 - line[i]);
    auto* row = const_cast<JSAMPROW>(inverted_.empty() ? line : inverted_.data());
    encoder_->session.run([&] { jpeg_write_scanlines(&encoder_->codec, &row, 1); });
}

void JpegSaver::finish() {
    encoder_->session.run([&] { jpeg_finish_compress(&encoder_->codec); });
}

}  // namespace jpeg
