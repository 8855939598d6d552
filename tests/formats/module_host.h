// A host of the modules in the build tree.
#pragma once

#include <cstdlib>

#include "tests/formats/format_files.h"
#include "tests/support/module_image.h"

inline bool describe(const Image& image, const Pixels& pixels, int32_t colorSpace) {
    const VORN_ChunkyBuffer& p = pixels.buffer.chunky;
    return image.set(ITAG_Width, p.width, ITAG_Height, p.height, ITAG_Channels, p.channels,
                     ITAG_ImageChannelSize, p.bytesPerChannel, ITAG_ColorSpace, colorSpace,
                     ITAG_Orientation, 0);
}

inline bool save(const Image& image,
                 const std::string& path,
                 const Pixels& pixels,
                 int32_t colorSpace = VORN_CS_RGB) {
    return image.open(path) && describe(image, pixels, colorSpace) && image.write(pixels);
}

class Modules : public testing::Test {
  public:
    // The modules of another build may be spoken to instead.
    static std::string home() {
        const char* other = std::getenv("VORN_TEST_HOME");
        return other ? other : VORN_BUILT_HOME;
    }

    // The formats whose codec libraries are missing are not built.
    static bool has(const std::string& saver) {
        return std::filesystem::exists(home() + "/Savers/" + saver + ".cap");
    }

    // The loader of what a saver has saved.
    static std::string loaderOf(const std::string& saver) {
        return saver == "avif" ? "heif" : saver;
    }

  protected:
    ScopedVariable home_{"VORN", home()};
    ScratchDirectory files_;
    UserSettings user_;
};
