// Pictures that others made, read by a host as most hosts read: red, green, blue and alpha,
// upright.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "formats/common/failure.h"
#include "formats/common/layout.h"
#include "tests/scratch_home.h"

namespace fs = std::filesystem;

const fs::path kGoImages = "/usr/share/gocode/src/golang.org/x/image/testdata";
const fs::path kGoSources = "/usr/share/go-1.19/src/image";
const fs::path kPixbufImages = "/usr/libexec/installed-tests/gdk-pixbuf/test-images";
const fs::path kPictures = VORN_TEST_PICTURES;
const fs::path kPillow = kPictures / "pillow/Tests/images";

constexpr int64_t kMostPixels = 1 << 26;

struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint16_t> samples;  // red, green, blue, alpha
    int32_t error = 0;
    int32_t pages = 0;

    const uint16_t* pixel(size_t i) const { return &samples[4 * i]; }
};

inline int32_t numberOf(VORN_Image* image, uint32_t id) {
    int32_t value = 0;
    VORN_H_ImageVaGetTags(image, id, &value, TAG_End);
    return value;
}

// The loader is the one that the file's content calls for.
inline Picture read(const fs::path& path, VORN_Word page = 1) {
    Picture picture;
    char loader[256] = "";
    const std::unique_ptr<VORN_Image, void (*)(VORN_Image*)> image(
        VORN_H_ImageGetLoaderName(path.c_str(), nullptr, loader, sizeof loader)
            ? VORN_H_ModuleVaOpen(loader, VORN_LOADER, TAG_End)
            : nullptr,
        VORN_H_ModuleClose);
    const auto failed = [&] {
        picture.error = VORN_ErrorPairCode(VORN_H_ImageGetError(image.get()));
        return picture;
    };
    if (!image || !VORN_H_ImageVaOpen(image.get(), ITAG_Filename, path.c_str(), ITAG_PageNumber,
                                      page, ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End))
        return failed();
    VORN_H_ImageVaSetTags(image.get(), ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, ITAG_Orientation,
                          VORN_Word{0}, TAG_End);
    picture.width = numberOf(image.get(), ITAG_Width);
    picture.height = numberOf(image.get(), ITAG_Height);
    picture.pages = numberOf(image.get(), ITAG_PageCount);
    if (int64_t{picture.width} * picture.height > kMostPixels) {
        picture.error = formats::kOutOfMemory;
        return picture;
    }
    picture.samples.assign(
        static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 4, 0xFFFF);
    VORN_ImageBuffer buffer{};
    buffer.type = VORN_BUFFER_CHUNKY;
    buffer.chunky = formats::interleavedBuffer(reinterpret_cast<uint8_t*>(picture.samples.data()),
                                               picture.width, picture.height, 4, 2);
    if (!numberOf(image.get(), ITAG_Alpha)) buffer.chunky.channelPlace[3] = nullptr;
    if (!VORN_H_ImageVaReadData(image.get(), &buffer, TAG_End)) return failed();
    return picture;
}

// In 255ths; 256 when the sizes differ. The colour of what can't be seen doesn't count.
inline double furthest(const Picture& a, const Picture& b, size_t channels = 4) {
    if (a.width != b.width || a.height != b.height || a.error || b.error) return 256;
    int most = 0;
    for (size_t i = 0; i < a.samples.size() / 4; ++i) {
        if (a.pixel(i)[3] == 0 && b.pixel(i)[3] == 0) continue;
        for (size_t c = 0; c < channels; ++c)
            most = std::max(most, std::abs(a.pixel(i)[c] - b.pixel(i)[c]));
    }
    return most / 257.0;
}

class RealFiles : public testing::Test {
  protected:
    ScopedVariable home_{"VORN", VORN_BUILT_HOME};
};
