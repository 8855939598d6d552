#include "tools/picture.h"

#include <vorn/library.h>

#include <cstring>
#include <new>

#include "tools/failure.h"
#include "tools/handle.h"

namespace vorn::tool {

namespace {

void onMeter(VORN_Image*, VORN_Word userData, int32_t count) {
    reinterpret_cast<ProgressBar*>(userData)->tick(count);
}

int32_t onAbort(VORN_Image*, VORN_Word userData) {
    return reinterpret_cast<const Interrupts*>(userData)->requested();
}

// Without a bar there is no meter: it would cut the transfer into more and smaller blocks.
TagWords transferTags(Onlookers& onlookers) {
    TagWords words;
    words.addAddress(ITAG_AbortCallback, &onAbort);
    words.addAddress(ITAG_AbortCallbackUserData, &onlookers.interrupts);
    if (onlookers.progress.isShown()) {
        words.addAddress(ITAG_MeterCallback, &onMeter);
        words.addAddress(ITAG_MeterCallbackUserData, &onlookers.progress);
        words.addLong(ITAG_MeterTicks, ProgressBar::kTicks);
    }
    return words;
}

}  // namespace

Picture::Picture(const ImageDescription& description, const ConversionPlan& plan)
    : width_(description.width), height_(description.height), plan_(plan) {}

Picture Picture::read(VORN_Image* image,
                      const std::string& file,
                      const ImageDescription& description,
                      const ConversionPlan& plan,
                      Onlookers& onlookers) {
    Picture picture(description, plan);
    const auto bytes = static_cast<uint64_t>(description.width) *
                       static_cast<uint64_t>(description.height) *
                       static_cast<uint64_t>(plan.channels() * plan.bytesPerChannel);
    picture.pixels_.reset(new (std::nothrow) uint8_t[bytes]);
    if (picture.pixels_ == nullptr) {
        throw numberedFailure(file, kErrorMemory, 0);
    }
    if (plan.palette) {
        picture.copyPalette(image, file);
    }
    const int32_t channels = plan.channels() - (plan.addAlpha ? 1 : 0);
    const VORN_ImageBuffer target = picture.buffer(channels);
    // A loader may find damage behind the last line, when all lines have been delivered.
    if (!VORN_H_ImageReadData(image, &target, transferTags(onlookers).data()) ||
        VORN_ErrorPairCode(VORN_H_ImageGetError(image)) != 0) {
        throw libraryFailure(file, image);
    }
    if (plan.addAlpha) {
        picture.makeOpaque();
    }
    return picture;
}

// The first `channels` channels of every pixel.
VORN_ImageBuffer Picture::buffer(int32_t channels) const {
    VORN_ImageBuffer buffer{};
    buffer.type = VORN_BUFFER_CHUNKY;
    VORN_ChunkyBuffer& chunky = buffer.chunky;
    chunky.width = width_;
    chunky.height = height_;
    chunky.channels = channels;
    chunky.bytesPerChannel = plan_.bytesPerChannel;
    const bool withAlpha = channels > plan_.colorChannels;
    chunky.flags = withAlpha ? uint32_t{VORN_DF_ALPHA} : 0;
    const int32_t pixelStep = plan_.channels() * plan_.bytesPerChannel;
    for (int32_t c = 0; c < channels; ++c) {
        chunky.pixelStep[c] = pixelStep;
        chunky.lineStep[c] = width_ * pixelStep;
        chunky.channelPlace[c] = pixels_.get() + c * plan_.bytesPerChannel;
        chunky.bitsPerChannel[c] = static_cast<uint8_t>(8 * plan_.bytesPerChannel);
    }
    return buffer;
}

void Picture::copyPalette(VORN_Image* image, const std::string& file) {
    PaletteView view;
    if (!findPalette(image, view)) {
        throw numberedFailure(file, kErrorProtocol, 0);
    }
    palette_.resize(1 + (view.byteCount + 3) / 4);
    palette_[0] = view.byteCount;
    std::memcpy(&palette_[1], view.bytes, view.byteCount);
}

void Picture::makeOpaque() {
    const auto bytes = static_cast<size_t>(plan_.bytesPerChannel);
    const size_t pixelStep = static_cast<size_t>(plan_.channels()) * bytes;
    const size_t count = static_cast<size_t>(width_) * static_cast<size_t>(height_);
    uint8_t* alpha = pixels_.get() + pixelStep - bytes;
    for (size_t i = 0; i < count; ++i, alpha += pixelStep) {
        std::memset(alpha, 0xFF, bytes);
    }
}

TagWords Picture::tags(const Fields& fields) const {
    TagWords words;
    words.addLong(ITAG_Width, width_);
    words.addLong(ITAG_Height, height_);
    words.addLong(ITAG_Channels, plan_.channels());
    words.addLong(ITAG_ImageChannels, plan_.colorChannels);
    words.addLong(ITAG_ImageChannelSize, plan_.bytesPerChannel);
    words.addLong(ITAG_Alpha, plan_.channels() > plan_.colorChannels);
    words.addLong(ITAG_ColorSpace, plan_.colorSpace);
    words.addLong(ITAG_Orientation, 0);
    if (!palette_.empty()) {
        words.addAddress(ITAG_Palette, palette_.data());
    }
    addFields(words, fields);
    return words;
}

void Picture::write(VORN_Image* image,
                    const std::string& file,
                    const Fields& fields,
                    Onlookers& onlookers) const {
    const Interrupts::Watch watch(onlookers.interrupts, image);
    const VORN_ImageBuffer source = buffer(plan_.channels());
    if (!VORN_H_ImageVaOpen(image, ITAG_Filename, file.c_str(), TAG_End) ||
        !VORN_H_ImageSetTags(image, tags(fields).data()) ||
        !VORN_H_ImageWriteData(image, &source, transferTags(onlookers).data())) {
        throw libraryFailure(file, image);
    }
}

}  // namespace vorn::tool
