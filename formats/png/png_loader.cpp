#include "formats/png/png_loader.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "formats/png/png_info.h"
#include "formats/png/png_tail.h"

namespace png {
namespace {

using formats::Failure;

constexpr size_t kSignatureBytes = 8;

// Texts and profiles, as they are told to be and unpacked: a small file can claim huge ones.
constexpr size_t kLargestChunk = size_t{64} << 20;

constexpr uint8_t kHeadOfNoPicture[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0,   0, 0, 13,
                                        'I',  'H', 'D', 'R', 0,    0,    0,    1,    0,   0, 0, 1,
                                        8,    0,   0,   0,   0,    0x3A, 0x7E, 0x9B, 0x55};
constexpr uint8_t kStartOfPixels[] = {0, 0, 0, 0, 'I', 'D', 'A', 'T'};

void takeBytes(png_structp png, png_bytep bytes, size_t count) {
    auto& left = *static_cast<std::span<const uint8_t>*>(png_get_io_ptr(png));
    if (count > left.size()) png_error(png, "the chunks behind the pixels end too early");
    std::copy_n(left.begin(), count, bytes);
    left = left.subspan(count);
}

std::vector<uint8_t> paletteOf(const Session& session) {
    png_colorp colors = nullptr;
    int count = 0;
    png_get_PLTE(session.png(), session.info(), &colors, &count);
    std::vector<uint8_t> rgb;
    for (int i = 0; i < count; ++i)
        rgb.insert(rgb.end(), {colors[i].red, colors[i].green, colors[i].blue});
    if (rgb.empty()) throw Failure{formats::kDamaged};
    return rgb;
}

}  // namespace

formats::Description PngLoader::open(formats::InputFile file) {
    file_ = std::move(file);
    uint8_t signature[kSignatureBytes];
    if (file_.read(signature, sizeof signature) != sizeof signature ||
        png_sig_cmp(signature, 0, sizeof signature) != 0)
        throw Failure{formats::kNotThisFormat};

    if (file_.size() > 0) {  // a pipe is read once
        readBehindPixels();
        file_.seek(kSignatureBytes);
    }
    session_.emplace(Session::Direction::kRead, Failure{formats::kDamaged});
    readHead();
    // An image with see-through palette entries has no palette to the host, but alpha.
    const bool indexed =
        png_get_color_type(session_->png(), session_->info()) == PNG_COLOR_TYPE_PALETTE &&
        !png_get_valid(session_->png(), session_->info(), PNG_INFO_tRNS);
    formats::Description image = describeImage(indexed);
    setTransformations(indexed);
    image.channels = png_get_channels(session_->png(), session_->info());
    image.bytesPerChannel = png_get_bit_depth(session_->png(), session_->info()) == 16 ? 2 : 1;
    image.alpha = image.channels == 2 || image.channels == 4;
    lineBytes_ = png_get_rowbytes(session_->png(), session_->info());
    if (lineBytes_ != static_cast<size_t>(image.lineBytes())) throw Failure{formats::kUnsupported};
    return image;
}

void PngLoader::readBytes(png_structp png, png_bytep bytes, size_t count) {
    auto* loader = static_cast<PngLoader*>(png_get_io_ptr(png));
    Session::callback(png, [&] { loader->file_.readExactly(bytes, count); });
}

// libpng reads no further than to the first pixels, so what stands behind them is shown to it
// between the head of a picture and its pixels. Where it is broken the description goes without:
// that the file is damaged shows when its pixels are read.
void PngLoader::readBehindPixels() {
    std::vector<uint8_t> bytes = chunksBehindPixels(file_);
    if (bytes.empty()) return;
    bytes.insert(bytes.begin(), std::begin(kHeadOfNoPicture), std::end(kHeadOfNoPicture));
    bytes.insert(bytes.end(), std::begin(kStartOfPixels), std::end(kStartOfPixels));
    std::span<const uint8_t> left(bytes);
    try {
        Session& session = behind_.emplace(Session::Direction::kRead, Failure{formats::kDamaged});
        session.run([&] {
            png_set_read_fn(session.png(), &left, &takeBytes);
            png_set_chunk_malloc_max(session.png(), kLargestChunk);
            png_read_info(session.png(), session.info());
        });
    } catch (const Failure&) {
        behind_.reset();
    }
}

// A broken checksum is damage wherever it stands: nothing that follows it can be believed.
void PngLoader::readHead() {
    Session& session = *session_;
    session.run([&] {
        png_set_read_fn(session.png(), this, &readBytes);
        png_set_sig_bytes(session.png(), kSignatureBytes);
        png_set_crc_action(session.png(), PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
        // Sizes are checked below, where too large can be told apart from damaged.
        png_set_user_limits(session.png(), PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(session.png(), kLargestChunk);
        png_read_info(session.png(), session.info());
    });
}

// What the file says, before any transformation changes libpng's records.
formats::Description PngLoader::describeImage(bool indexed) {
    const png_uint_32 width = png_get_image_width(session_->png(), session_->info());
    const png_uint_32 height = png_get_image_height(session_->png(), session_->info());
    if (width > VORN_MAX_SIZE || height > VORN_MAX_SIZE) throw Failure{formats::kUnsupported};
    const int type = png_get_color_type(session_->png(), session_->info());
    const bool color = (type & PNG_COLOR_MASK_COLOR) != 0;
    const bool expanded = type == PNG_COLOR_TYPE_PALETTE && !indexed;

    formats::Description image;
    image.width = static_cast<int32_t>(width);
    image.height = static_cast<int32_t>(height);
    image.colorSpace = indexed ? VORN_CS_CMAPPED : color ? VORN_CS_RGB : VORN_CS_GRAY;
    image.significantBits = expanded ? 8 : png_get_bit_depth(session_->png(), session_->info());
    if (indexed) image.tags.palette(paletteOf(*session_));
    describe(*session_, behind_ ? &*behind_ : nullptr, image);
    behind_.reset();
    height_ = image.height;
    return image;
}

// Samples come out as whole bytes, least significant byte first, transparency as an alpha channel.
void PngLoader::setTransformations(bool indexed) {
    Session& session = *session_;
    interlaced_ = png_get_interlace_type(session.png(), session.info()) != PNG_INTERLACE_NONE;
    session.run([&] {
        if (indexed)
            png_set_packing(session.png());
        else
            png_set_expand(session.png());
        png_set_swap(session.png());
        png_set_interlace_handling(session.png());
        png_read_update_info(session.png(), session.info());
    });
}

void PngLoader::readLine(uint8_t* line) {
    Session& session = *session_;
    if (interlaced_) {
        if (line_ == 0) readWholePicture();
        std::memcpy(line, &picture_[static_cast<size_t>(line_) * lineBytes_], lineBytes_);
    } else {
        session.run([&] { png_read_row(session.png(), line, nullptr); });
    }
    // What follows the pixels is read as well: an incomplete file must not pass for a whole one.
    if (++line_ == height_) session.run([&] { png_read_end(session.png(), nullptr); });
}

void PngLoader::readWholePicture() {
    const auto lines = static_cast<size_t>(height_);
    if (lineBytes_ > kLargestPicture / lines) throw Failure{formats::kOutOfMemory};
    picture_.resize(lines * lineBytes_);
    Session& session = *session_;
    const int passes = png_set_interlace_handling(session.png());
    session.run([&] {
        for (int pass = 0; pass < passes; ++pass) {
            for (size_t y = 0; y < lines; ++y)
                png_read_row(session.png(), &picture_[y * lineBytes_], nullptr);
        }
    });
}

}  // namespace png
