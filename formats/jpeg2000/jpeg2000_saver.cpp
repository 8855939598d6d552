#include "formats/jpeg2000/jpeg2000_saver.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

#include "formats/common/big_endian.h"
#include "formats/common/picture_limit.h"
#include "formats/jpeg2000/boxes.h"
#include "formats/settings/module_settings.h"
#include "jpeg2000_capabilities.h"

namespace jpeg2000 {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr size_t kMostTiles = 65535;
constexpr int kMostSizes = 6;  // the picture halved up to five times
constexpr int64_t kHeld = 4;   // bytes of a sample in the library
constexpr size_t kBoxHead = 8;

bool isBareCodestream(const std::string& name) {
    const std::string ending = formats::fileEnding(name);
    return ending == "j2k" || ending == "j2c" || ending == "jpc";
}

}  // namespace

void Jpeg2000Saver::check(bool succeeded) const {
    stream_->check(succeeded, Failure{formats::kCannotSave});
}

formats::LineLayout Jpeg2000Saver::open(const ImageToSave& image, formats::OutputFile& file) {
    if (image.colorSpace != VORN_CS_GRAY && image.colorSpace != VORN_CS_RGB)
        throw Failure{formats::kCannotSave};
    file_ = &file;
    width_ = static_cast<size_t>(image.width);
    height_ = static_cast<size_t>(image.height);
    channels_ = static_cast<size_t>(image.channels);
    bytes_ = static_cast<size_t>(image.bytesPerChannel);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    readSettings(parameters);
    formats::heldBytes(static_cast<int64_t>(tileHeight_), kHeld * image.width * image.channels);
    lines_.resize(width_ * channels_ * bytes_ * tileHeight_);
    tile_.resize(tileWidth_ * channels_ * bytes_ * tileHeight_);
    if (!isBareCodestream(image.fileName)) {
        const std::vector<uint8_t> boxes = boxesFor(image);
        boxes_ = boxes.size();
        file.write(boxes.data(), boxes_);
    }
    start(parameters);
    return {image.channels, image.bytesPerChannel};
}

void Jpeg2000Saver::readSettings(opj_cparameters_t& parameters) {
    const settings::ModuleSettings set("jpeg2000", VORN_SAVER, kJpeg2000Capabilities);
    const auto size = static_cast<size_t>(set.number("TileSize"));
    tileWidth_ = size == 0 ? width_ : std::min(size, width_);
    tileHeight_ = size == 0 ? height_ : std::min(size, height_);
    const size_t across = (width_ + tileWidth_ - 1) / tileWidth_;
    if (across * ((height_ + tileHeight_ - 1) / tileHeight_) > kMostTiles)
        throw Failure{formats::kBadOption};
    parameters.tile_size_on = OPJ_TRUE;
    parameters.cp_tdx = static_cast<int>(tileWidth_);
    parameters.cp_tdy = static_cast<int>(tileHeight_);
    const auto least = static_cast<uint32_t>(std::min(tileWidth_, tileHeight_));
    parameters.numresolution = std::min(static_cast<int>(std::bit_width(least)), kMostSizes);
    parameters.tcp_mct = channels_ >= 3 ? 1 : 0;
    parameters.tcp_numlayers = 1;
    if (set.isOn("Lossless")) {
        parameters.cp_disto_alloc = 1;
        parameters.tcp_rates[0] = 0;  // as many bytes as it takes
    } else {
        parameters.irreversible = 1;
        parameters.cp_fixed_quality = 1;
        parameters.tcp_distoratio[0] = static_cast<float>(set.number("Quality"));
    }
}

void Jpeg2000Saver::start(opj_cparameters_t& parameters) {
    opj_image_cmptparm_t component{};
    component.dx = component.dy = 1;
    component.w = static_cast<OPJ_UINT32>(width_);
    component.h = static_cast<OPJ_UINT32>(height_);
    component.prec = static_cast<OPJ_UINT32>(8 * bytes_);
    std::vector<opj_image_cmptparm_t> components(channels_, component);
    image_.reset(opj_image_tile_create(static_cast<OPJ_UINT32>(channels_), components.data(),
                                       channels_ < 3 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
    codec_.reset(opj_create_compress(OPJ_CODEC_J2K));
    if (!image_) throw Failure{formats::kOutOfMemory};
    image_->x1 = component.w;
    image_->y1 = component.h;
    prepare(codec_.get());
    stream_.emplace(*file_);
    check(opj_setup_encoder(codec_.get(), &parameters, image_.get()));
    useThreads(codec_.get());
    check(opj_start_compress(codec_.get(), image_.get(), stream_->get()));
}

void Jpeg2000Saver::writeLine(const uint8_t* line) {
    const size_t lineBytes = width_ * channels_ * bytes_;
    std::copy_n(line, lineBytes, &lines_[held_]);
    held_ += lineBytes;
    if (held_ == lines_.size()) writeTiles();
}

void Jpeg2000Saver::writeTiles() {
    const size_t pixel = channels_ * bytes_;
    const size_t rows = held_ / (width_ * pixel);
    for (size_t left = 0; left < width_; left += tileWidth_) {
        const size_t columns = std::min(tileWidth_, width_ - left);
        uint8_t* to = tile_.data();
        for (size_t c = 0; c < channels_; ++c) {
            for (size_t y = 0; y < rows; ++y) {
                const uint8_t* from = &lines_[(y * width_ + left) * pixel + c * bytes_];
                for (size_t x = 0; x < columns; ++x, from += pixel, to += bytes_)
                    std::memcpy(to, from, bytes_);
            }
        }
        check(opj_write_tile(codec_.get(), nextTile_++, tile_.data(),
                             static_cast<OPJ_UINT32>(columns * rows * pixel), stream_->get()));
    }
    held_ = 0;
}

void Jpeg2000Saver::finish() {
    if (held_ > 0) writeTiles();
    check(opj_end_compress(codec_.get(), stream_->get()));
    const int64_t length = stream_->written() + static_cast<int64_t>(kBoxHead);
    if (boxes_ == 0 || length > UINT32_MAX) return;
    std::vector<uint8_t> head;
    formats::putBigEndian(head, static_cast<uint32_t>(length), 4);
    file_->seek(static_cast<int64_t>(boxes_ - kBoxHead));
    file_->write(head.data(), head.size());
}

}  // namespace jpeg2000
