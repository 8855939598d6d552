// A host of the modules in the build tree.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>

#include <cstdlib>
#include <string>

#include "tests/scratch_home.h"
#include "tests/support/module_image.h"

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
