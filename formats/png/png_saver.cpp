#include "formats/png/png_saver.h"

#include <zlib.h>

#include <algorithm>

#include "formats/png/png_info.h"
#include "formats/settings/module_settings.h"
#include "png_capabilities.h"

namespace png {
namespace {

using formats::Failure;
using formats::ImageToSave;

int colorType(const ImageToSave& image) {
    const int alpha = image.alpha ? PNG_COLOR_MASK_ALPHA : 0;
    if (image.colorSpace == VORN_CS_GRAY) return PNG_COLOR_TYPE_GRAY | alpha;
    if (image.colorSpace == VORN_CS_RGB) return PNG_COLOR_TYPE_RGB | alpha;
    const bool indexed = image.colorSpace == VORN_CS_CMAPPED && !image.alpha;
    // A 16-bit index has no room, and the library would widen or narrow it as if it were a colour.
    if (indexed && image.bytesPerChannel == 1) return PNG_COLOR_TYPE_PALETTE;
    throw Failure{formats::kCannotSave};
}

// Indices are no amounts, so differences between them don't help: they are not filtered. For
// everything else Paeth alone comes close to trying all filters, in three quarters of the time.
constexpr int kAutomatic = -1;
constexpr settings::Choice<int> kFilters[] = {
    {"auto", kAutomatic},       {"none", PNG_FILTER_NONE},   {"sub", PNG_FILTER_SUB},
    {"up", PNG_FILTER_UP},      {"average", PNG_FILTER_AVG}, {"paeth", PNG_FILTER_PAETH},
    {"fast", PNG_FAST_FILTERS}, {"all", PNG_ALL_FILTERS}};
constexpr settings::Choice<int> kStrategies[] = {
    {"auto", kAutomatic},     {"default", Z_DEFAULT_STRATEGY},
    {"filtered", Z_FILTERED}, {"huffman", Z_HUFFMAN_ONLY},
    {"rle", Z_RLE},           {"fixed", Z_FIXED}};

}  // namespace

formats::LineLayout PngSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    file_ = &file;
    const int type = colorType(image);
    const settings::ModuleSettings set("png", VORN_SAVER, kPngCapabilities);
    const bool interlaced = set.isOn("Interlace");
    if (interlaced) holdPicture(image);
    session_.emplace(Session::Direction::kWrite, Failure{formats::kCannotSave});
    Session& session = *session_;
    session.run([&] {
        png_set_write_fn(session.png(), this, &writeBytes, &flush);
        png_set_user_limits(session.png(), VORN_MAX_SIZE, VORN_MAX_SIZE);
        png_set_IHDR(session.png(), session.info(), static_cast<png_uint_32>(image.width),
                     static_cast<png_uint_32>(image.height), 8 * image.bytesPerChannel, type,
                     interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    });
    compress(set, type == PNG_COLOR_TYPE_PALETTE);
    if (type == PNG_COLOR_TYPE_PALETTE) putPalette(image);
    putResolution(session, image);
    putTexts(session, image);
    session.run([&] {
        png_write_info(session.png(), session.info());
        png_set_swap(session.png());  // samples come least significant byte first
    });
    return {image.channels, image.bytesPerChannel};
}

void PngSaver::compress(const settings::ModuleSettings& set, bool indexed) {
    const int level = set.number("CompressionLevel");
    const int chosen = set.choice("Filter", kFilters);
    const int automatic = indexed ? PNG_FILTER_NONE : PNG_FILTER_PAETH;
    const int filter = chosen == kAutomatic ? automatic : chosen;
    const int strategy = set.choice("Strategy", kStrategies);
    Session& session = *session_;
    session.run([&] {
        png_set_compression_level(session.png(), level);
        png_set_filter(session.png(), PNG_FILTER_TYPE_BASE, filter);
        // Otherwise libpng takes the strategy for filtered samples where there is a filter.
        if (strategy != kAutomatic) png_set_compression_strategy(session.png(), strategy);
    });
}

void PngSaver::holdPicture(const ImageToSave& image) {
    lineBytes_ = static_cast<size_t>(image.width) *
                 static_cast<size_t>(image.channels * image.bytesPerChannel);
    const auto lines = static_cast<size_t>(image.height);
    if (lineBytes_ > kLargestPicture / lines) throw Failure{formats::kOutOfMemory};
    picture_.resize(lineBytes_ * lines);
}

void PngSaver::writeBytes(png_structp png, png_bytep bytes, size_t count) {
    auto* saver = static_cast<PngSaver*>(png_get_io_ptr(png));
    Session::callback(png, [&] { saver->file_->write(bytes, count); });
}

void PngSaver::putPalette(const ImageToSave& image) {
    const std::vector<uint8_t> rgb = image.palette();
    const size_t count = rgb.size() / 3;
    if (count < 1 || count > PNG_MAX_PALETTE_LENGTH) throw Failure{formats::kCannotSave};
    png_color colors[PNG_MAX_PALETTE_LENGTH];
    for (size_t i = 0; i < count; ++i) colors[i] = {rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]};
    Session& session = *session_;
    session.run(
        [&] { png_set_PLTE(session.png(), session.info(), colors, static_cast<int>(count)); });
}

void PngSaver::writeLine(const uint8_t* line) {
    if (!picture_.empty()) {
        std::copy_n(line, lineBytes_, &picture_[held_]);
        held_ += lineBytes_;
        return;
    }
    Session& session = *session_;
    session.run([&] { png_write_row(session.png(), line); });
}

void PngSaver::writePicture() {
    Session& session = *session_;
    session.run([&] {
        for (int passes = png_set_interlace_handling(session.png()); passes > 0; --passes) {
            for (size_t at = 0; at < picture_.size(); at += lineBytes_)
                png_write_row(session.png(), &picture_[at]);
        }
    });
}

void PngSaver::finish() {
    if (!picture_.empty()) writePicture();
    Session& session = *session_;
    session.run([&] { png_write_end(session.png(), session.info()); });
}

}  // namespace png
