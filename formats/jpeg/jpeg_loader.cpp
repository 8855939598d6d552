#include "formats/jpeg/jpeg_loader.h"

#include <jerror.h>

#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "formats/common/exif.h"
#include "formats/common/inks.h"
#include "formats/common/utf8.h"

namespace jpeg {
namespace {

using formats::Failure;

constexpr size_t kBufferSize = 65536;

// A progressive file is finished only with its last scan, so its coefficients are held, 2 bytes
// each. A small file can claim a huge picture: this is where that ends.
constexpr long kMostMemory = 1L << 30;

// Every scan of a progressive file is a walk through the whole picture, and costs the file a few
// bytes.
constexpr int kMostScans = 500;

constexpr unsigned kLongestMarker = 0xFFFF;
constexpr std::string_view kExifName{"Exif\0\0", 6};
constexpr double kCentimetresPerInch = 2.54;

bool isTurned(int32_t orientation) { return orientation % 2 != 0; }

}  // namespace

JpegLoader::Decoder::Decoder(formats::InputFile input)
    : file(std::move(input)), buffer(kBufferSize) {
    codec.err = session.errors();
    session.run([this] { jpeg_create_decompress(&codec); });
    codec.client_data = this;
    codec.mem->max_memory_to_use = kMostMemory;
    source.init_source = [](j_decompress_ptr) {};
    source.fill_input_buffer = &fill;
    source.skip_input_data = &skip;
    source.resync_to_restart = &jpeg_resync_to_restart;
    source.term_source = [](j_decompress_ptr) {};
    codec.src = &source;
    progress.progress_monitor = &limitScans;
    codec.progress = &progress;
}

JpegLoader::Decoder& JpegLoader::Decoder::of(j_decompress_ptr codec) {
    return *static_cast<Decoder*>(codec->client_data);
}

// Behind the end of a file that is cut short stands an end marker, so that libjpeg hands out what
// there is. The warning is what makes it an error later.
boolean JpegLoader::Decoder::fill(j_decompress_ptr codec) {
    Decoder& self = of(codec);
    size_t count = 0;
    Session::callback(reinterpret_cast<j_common_ptr>(codec),
                      [&] { count = self.file.read(self.buffer.data(), self.buffer.size()); });
    if (count == 0) {
        WARNMS(codec, JWRN_JPEG_EOF);
        self.buffer[0] = 0xFF;
        self.buffer[1] = JPEG_EOI;
        count = 2;
    }
    self.source.next_input_byte = self.buffer.data();
    self.source.bytes_in_buffer = count;
    return TRUE;
}

void JpegLoader::Decoder::skip(j_decompress_ptr codec, long count) {
    Decoder& self = of(codec);
    auto left = static_cast<size_t>(count > 0 ? count : 0);
    while (left > self.source.bytes_in_buffer) {
        left -= self.source.bytes_in_buffer;
        fill(codec);
    }
    self.source.next_input_byte += left;
    self.source.bytes_in_buffer -= left;
}

void JpegLoader::Decoder::limitScans(j_common_ptr codec) {
    if (!codec->is_decompressor) return;
    if (reinterpret_cast<j_decompress_ptr>(codec)->input_scan_number <= kMostScans) return;
    Session::callback(codec, [] { throw Failure{formats::kDamaged}; });
}

formats::Description JpegLoader::open(formats::InputFile file) {
    decoder_ = std::make_unique<Decoder>(std::move(file));
    jpeg_decompress_struct& codec = decoder_->codec;
    readHead();
    formats::Description image;
    image.significantBits = 8;
    chooseColors(image);
    describeMarkers(image);
    chooseScale(image.orientation);
    decoder_->session.run([&] { jpeg_start_decompress(&codec); });
    image.width = static_cast<int32_t>(codec.output_width);
    image.height = static_cast<int32_t>(codec.output_height);
    if (toRgb_) cmyk_.resize(static_cast<size_t>(image.width) * 4);
    return image;
}

void JpegLoader::readHead() {
    jpeg_decompress_struct& codec = decoder_->codec;
    uint8_t start[2] = {};
    if (decoder_->file.read(start, sizeof start) != sizeof start || start[0] != 0xFF ||
        start[1] != 0xD8)
        throw Failure{formats::kNotThisFormat};
    decoder_->file.seek(0);
    decoder_->session.run([&] {
        jpeg_save_markers(&codec, JPEG_APP0 + 1, kLongestMarker);
        jpeg_save_markers(&codec, JPEG_COM, kLongestMarker);
        jpeg_read_header(&codec, TRUE);
        // Found only now in 12-bit files, but better said before the image counts as open.
        if (codec.data_precision != BITS_IN_JSAMPLE)
            ERREXIT1(&codec, JERR_BAD_PRECISION, codec.data_precision);
    });
}

// YCbCr is handed on as RGB: that of JPEG files uses the full range, "YUV601" does not.
void JpegLoader::chooseColors(formats::Description& image) {
    jpeg_decompress_struct& codec = decoder_->codec;
    switch (codec.jpeg_color_space) {
        case JCS_GRAYSCALE:
            codec.out_color_space = JCS_GRAYSCALE;
            image.colorSpace = VORN_CS_GRAY;
            image.channels = 1;
            break;
        case JCS_RGB:
        case JCS_YCbCr:
            codec.out_color_space = JCS_RGB;
            image.channels = 3;
            break;
        case JCS_CMYK:
        case JCS_YCCK:
            codec.out_color_space = JCS_CMYK;
            inverted_ = codec.saw_Adobe_marker != 0;
            toRgb_ = wishes().colorSpace == VORN_CS_RGB || wishes().colorSpace == VORN_CS_GRAY;
            image.colorSpace = toRgb_ ? VORN_CS_RGB : VORN_CS_CMYK;
            image.channels = toRgb_ ? 3 : 4;
            break;
        default:
            codec.out_color_space = JCS_UNKNOWN;
            image.colorSpace = VORN_CS_NONE;
            image.channels = codec.num_components;
    }
}

void JpegLoader::describeMarkers(formats::Description& image) {
    const jpeg_decompress_struct& codec = decoder_->codec;
    formats::Exif exif;
    std::string comment;
    for (const jpeg_marker_struct* m = codec.marker_list; m; m = m->next) {
        const std::string_view text(reinterpret_cast<const char*>(m->data), m->data_length);
        if (m->marker == JPEG_COM && comment.empty())
            comment = formats::utf8FromUnknown(text.substr(0, text.find('\0')));
        if (m->marker == JPEG_APP0 + 1 && text.substr(0, kExifName.size()) == kExifName)
            exif = formats::readExif(m->data + kExifName.size(), m->data_length - kExifName.size());
    }
    // The JFIF marker says what the picture's own resolution is; where it says nothing, EXIF may.
    const double scale = codec.density_unit == 2 ? kCentimetresPerInch : 1;
    if (codec.saw_JFIF_marker && codec.density_unit != 0 && codec.X_density && codec.Y_density) {
        exif.xDpi = static_cast<int32_t>(std::lround(codec.X_density * scale));
        exif.yDpi = static_cast<int32_t>(std::lround(codec.Y_density * scale));
    } else if (codec.saw_JFIF_marker && codec.density_unit == 0) {
        setAspect(exif, codec.X_density, codec.Y_density);
    }
    describe(exif, image);
    bool described = comment.empty();
    for (const auto& text : exif.texts) described = described || text.first == ITAG_Description;
    if (!described) image.tags.text(ITAG_Description, comment);
}

// The smallest picture that libjpeg can decode directly and that is not smaller than wanted. The
// wish counts in the picture as it is seen.
void JpegLoader::chooseScale(int32_t orientation) {
    int32_t width = wishes().width;
    int32_t height = wishes().height;
    if (isTurned(orientation)) std::swap(width, height);
    if (width <= 0 && height <= 0) return;
    jpeg_decompress_struct& codec = decoder_->codec;
    codec.scale_num = 1;
    for (codec.scale_denom = 8; codec.scale_denom > 1; codec.scale_denom /= 2) {
        decoder_->session.run([&] { jpeg_calc_output_dimensions(&codec); });
        if (static_cast<int64_t>(codec.output_width) >= width &&
            static_cast<int64_t>(codec.output_height) >= height)
            return;
    }
}

void JpegLoader::readLine(uint8_t* line) {
    jpeg_decompress_struct& codec = decoder_->codec;
    const size_t samples =
        static_cast<size_t>(codec.output_width) * static_cast<size_t>(codec.output_components);
    JSAMPROW row = toRgb_ ? cmyk_.data() : line;
    decoder_->session.run([&] { jpeg_read_scanlines(&codec, &row, 1); });
    if (inverted_) {
        for (size_t i = 0; i < samples; ++i) row[i] = static_cast<uint8_t>(255 - row[i]);
    }
    for (size_t i = 0; toRgb_ && i < samples; i += 4, line += 3) {
        for (size_t c = 0; c < 3; ++c) line[c] = formats::paperUnder(row[i + c], row[i + 3]);
    }
    // What is missing or broken has been made up: that must not pass for a whole picture.
    if (codec.output_scanline == codec.output_height) {
        decoder_->session.run([&] { jpeg_finish_decompress(&codec); });
        if (decoder_->session.isDamaged()) throw Failure{formats::kDamaged};
    }
}

}  // namespace jpeg
