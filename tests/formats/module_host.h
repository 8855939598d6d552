// A host of the modules in the build tree.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "formats/common/layout.h"
#include "tests/scratch_home.h"

class Image {
  public:
    Image(const char* module, int32_t type) : image_(VORN_H_ModuleVaOpen(module, type, TAG_End)) {}
    ~Image() { VORN_H_ModuleClose(image_); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    bool open(const std::string& path) const {
        return VORN_H_ImageVaOpen(image_, ITAG_Filename, path.c_str(), TAG_End);
    }
    bool close() const { return VORN_H_ImageClose(image_); }
    int32_t error() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image_)); }
    int32_t subcode() const { return VORN_ErrorPairSubcode(VORN_H_ImageGetError(image_)); }
    VORN_Image* get() const { return image_; }

  private:
    VORN_Image* image_;
};

// Pixels of a host: samples side by side.
struct Pixels {
    Pixels(int32_t width, int32_t height, int32_t channels, int32_t bytes)
        : samples(static_cast<size_t>(width * height * channels * bytes)) {
        buffer.type = VORN_BUFFER_CHUNKY;
        buffer.chunky = formats::interleavedBuffer(samples.data(), width, height, channels, bytes);
    }
    std::vector<uint8_t> samples;
    VORN_ImageBuffer buffer;
};

inline bool describe(const Image& image, const Pixels& pixels, int32_t colorSpace) {
    return VORN_H_ImageVaSetTags(
        image.get(), ITAG_Width, static_cast<VORN_Word>(pixels.buffer.chunky.width), ITAG_Height,
        static_cast<VORN_Word>(pixels.buffer.chunky.height), ITAG_Channels,
        static_cast<VORN_Word>(pixels.buffer.chunky.channels), ITAG_ImageChannelSize,
        static_cast<VORN_Word>(pixels.buffer.chunky.bytesPerChannel), ITAG_ColorSpace,
        static_cast<VORN_Word>(colorSpace), ITAG_Orientation, VORN_Word{0}, TAG_End);
}

inline bool save(const Image& image,
                 const std::string& path,
                 const Pixels& pixels,
                 int32_t colorSpace = VORN_CS_RGB) {
    return image.open(path) && describe(image, pixels, colorSpace) &&
           VORN_H_ImageVaWriteData(image.get(), &pixels.buffer, TAG_End);
}

class Modules : public testing::Test {
  public:
    // The modules of another build may be spoken to instead.
    static std::string home() {
        const char* other = std::getenv("VORN_TEST_HOME");
        return other ? other : VORN_BUILT_HOME;
    }

  protected:
    ScopedVariable home_{"VORN", home()};
    ScratchDirectory files_;
};
