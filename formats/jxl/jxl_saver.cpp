#include "formats/jxl/jxl_saver.h"

#include <algorithm>
#include <cmath>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/settings/module_settings.h"
#include "jxl_capabilities.h"

namespace jxl_format {
namespace {

using formats::Failure;
using formats::ImageToSave;

constexpr size_t kBufferSize = 65536;

// The library counts in distances that an eye sees: 0.1 for 100, 1 for 90, from 30 steeply to 15.
float distanceOf(int32_t quality) {
    const float q = static_cast<float>(quality);
    if (q >= 30) return 0.1F + (100 - q) * 0.09F;
    return std::min(6.4F + std::pow(2.5F, (30 - q) / 5) / 6.25F, 15.0F);
}

}  // namespace

void JxlSaver::check(JxlEncoderStatus status) const {
    if (status == JXL_ENC_SUCCESS) return;
    if (JxlEncoderGetError(encoder_.get()) == JXL_ENC_ERR_OOM) throw Failure{formats::kOutOfMemory};
    throw Failure{formats::kCannotSave};
}

formats::LineLayout JxlSaver::open(const ImageToSave& image, formats::OutputFile& file) {
    if (image.colorSpace != VORN_CS_GRAY && image.colorSpace != VORN_CS_RGB)
        throw Failure{formats::kCannotSave};
    lineBytes_ = static_cast<size_t>(image.width * image.channels * image.bytesPerChannel);
    picture_.resize(formats::heldBytes(image.height, static_cast<int64_t>(lineBytes_)));
    file_ = &file;
    encoder_.reset(JxlEncoderCreate(nullptr));
    if (!encoder_) throw Failure{formats::kOutOfMemory};
    threads_.setFor(static_cast<uint64_t>(image.width), static_cast<uint64_t>(image.height));
    check(JxlEncoderSetParallelRunner(encoder_.get(), &JxlResizableParallelRunner, threads_.get()));
    frame_ = JxlEncoderFrameSettingsCreate(encoder_.get(), nullptr);
    if (!frame_) throw Failure{formats::kOutOfMemory};
    readSettings();
    const std::vector<uint8_t> exif = formats::exifBlock(image);
    if (!exif.empty()) check(JxlEncoderUseBoxes(encoder_.get()));
    describe(image);
    if (!exif.empty()) putExif(exif);
    return {image.channels, image.bytesPerChannel};
}

void JxlSaver::readSettings() {
    const settings::ModuleSettings set("jxl", VORN_SAVER, kJxlCapabilities);
    check(JxlEncoderFrameSettingsSetOption(frame_, JXL_ENC_FRAME_SETTING_EFFORT,
                                           set.number("Effort")));
    lossless_ = set.isOn("Lossless");
    if (lossless_)
        check(JxlEncoderSetFrameLossless(frame_, JXL_TRUE));
    else
        check(JxlEncoderSetFrameDistance(frame_, distanceOf(set.number("Quality"))));
}

void JxlSaver::describe(const ImageToSave& image) {
    const bool grey = image.colorSpace == VORN_CS_GRAY;
    const uint32_t bits = 8 * static_cast<uint32_t>(image.bytesPerChannel);
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = static_cast<uint32_t>(image.width);
    info.ysize = static_cast<uint32_t>(image.height);
    info.bits_per_sample = bits;
    info.num_color_channels = grey ? 1 : 3;
    info.num_extra_channels = image.alpha ? 1 : 0;
    info.alpha_bits = image.alpha ? bits : 0;
    info.uses_original_profile = lossless_;
    info.orientation = static_cast<JxlOrientation>(
        formats::exifFromOrientation(image.number(ITAG_Orientation).value_or(0)));
    check(JxlEncoderSetBasicInfo(encoder_.get(), &info));
    JxlColorEncoding colors{};
    JxlColorEncodingSetToSRGB(&colors, grey);
    check(JxlEncoderSetColorEncoding(encoder_.get(), &colors));
    format_ = {static_cast<uint32_t>(image.channels), bits == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8,
               JXL_LITTLE_ENDIAN, 0};
}

// The block follows its offset in the box, which is 0.
void JxlSaver::putExif(const std::vector<uint8_t>& block) const {
    std::vector<uint8_t> box(4);
    box.insert(box.end(), block.begin(), block.end());
    check(JxlEncoderAddBox(encoder_.get(), "Exif", box.data(), box.size(), JXL_FALSE));
}

void JxlSaver::writeLine(const uint8_t* line) {
    std::copy_n(line, lineBytes_, &picture_[held_]);
    held_ += lineBytes_;
}

void JxlSaver::finish() {
    check(JxlEncoderAddImageFrame(frame_, &format_, picture_.data(), picture_.size()));
    picture_.clear();
    picture_.shrink_to_fit();  // the encoder has a copy
    JxlEncoderCloseInput(encoder_.get());
    std::vector<uint8_t> buffer(kBufferSize);
    JxlEncoderStatus status = JXL_ENC_NEED_MORE_OUTPUT;
    while (status == JXL_ENC_NEED_MORE_OUTPUT) {
        uint8_t* next = buffer.data();
        size_t room = buffer.size();
        status = JxlEncoderProcessOutput(encoder_.get(), &next, &room);
        file_->write(buffer.data(), buffer.size() - room);
    }
    check(status);
}

}  // namespace jxl_format
