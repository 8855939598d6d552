#include "formats/png/png_saver.h"

#include <algorithm>
#include <vector>

#include "formats/png/png_info.h"

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

}  // namespace

formats::LineLayout PngSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    file_ = &file;
    const int type = colorType(image);
    session_.emplace(Session::Direction::kWrite, Failure{formats::kCannotSave});
    Session& session = *session_;
    session.run([&] {
        png_set_write_fn(session.png(), this, &writeBytes, &flush);
        png_set_user_limits(session.png(), VORN_MAX_SIZE, VORN_MAX_SIZE);
        png_set_IHDR(session.png(), session.info(), static_cast<png_uint_32>(image.width),
                     static_cast<png_uint_32>(image.height), 8 * image.bytesPerChannel, type,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    });
    if (type == PNG_COLOR_TYPE_PALETTE) putPalette(image);
    putResolution(session, image);
    putTexts(session, image);
    session.run([&] {
        png_write_info(session.png(), session.info());
        png_set_swap(session.png());  // samples come least significant byte first
    });
    return {image.channels, image.bytesPerChannel};
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
    Session& session = *session_;
    session.run([&] { png_write_row(session.png(), line); });
}

void PngSaver::finish() {
    Session& session = *session_;
    session.run([&] { png_write_end(session.png(), session.info()); });
}

}  // namespace png
