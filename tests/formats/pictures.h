// Pictures that others made, read by a host as most hosts read: red, green, blue and alpha,
// upright.
#pragma once

#include "tests/formats/module_host.h"

namespace fs = std::filesystem;

const fs::path kGoImages = "/usr/share/gocode/src/golang.org/x/image/testdata";
const fs::path kGoSources = "/usr/share/go-1.19/src/image";
const fs::path kPixbufImages = "/usr/libexec/installed-tests/gdk-pixbuf/test-images";
const fs::path kPictures = VORN_TEST_PICTURES;
const fs::path kTurbo = kPictures / "libjpeg-turbo/testimages";
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

// The loader is the one that the file's content calls for.
inline Picture read(const fs::path& path, VORN_Word page = 1) {
    Picture picture;
    char loader[256] = "";
    if (!VORN_H_ImageGetLoaderName(path.c_str(), nullptr, loader, sizeof loader)) {
        picture.error = VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr));
        return picture;
    }
    const Image image(loader, VORN_LOADER);
    if (VORN_H_ImageVaOpen(image.get(), ITAG_Filename, path.c_str(), ITAG_PageNumber, page,
                           ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End)) {
        image.set(ITAG_ColorSpace, VORN_CS_RGB, ITAG_Orientation, 0);
        picture.width = image.number(ITAG_Width);
        picture.height = image.number(ITAG_Height);
        picture.pages = image.number(ITAG_PageCount);
        const int64_t pixels = int64_t{picture.width} * picture.height;
        if (pixels > kMostPixels) {
            picture.error = formats::kOutOfMemory;
            return picture;
        }
        picture.samples.assign(static_cast<size_t>(pixels) * 4, 0xFFFF);
        VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, {}};
        buffer.chunky =
            formats::interleavedBuffer(reinterpret_cast<uint8_t*>(picture.samples.data()),
                                       picture.width, picture.height, 4, 2);
        if (!image.number(ITAG_Alpha)) buffer.chunky.channelPlace[3] = nullptr;
        if (VORN_H_ImageVaReadData(image.get(), &buffer, TAG_End)) return picture;
    }
    picture.error = image.error();
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

using RealFiles = Modules;
