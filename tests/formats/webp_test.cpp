#include <webp/mux.h>

#include "formats/webp/webp_loader.h"
#include "formats/webp/webp_saver.h"
#include "tests/formats/format_files.h"

namespace {

using webp::WebpLoader;
using webp::WebpSaver;

using Webp = FormatTest;

TEST_F(Webp, KeepsEveryPixelWithoutLossAndTextsAndOrientation) {
    settings_.store("webp", "Lossless=true");
    for (const VORN_Word channels : {3, 4}) {
        const LoadedImage back = throughFile<WebpSaver, WebpLoader>(
            files_.path("a.webp"), imageWords(31, 17, channels, VORN_CS_RGB, 1,
                                              {ITAG_Artist, word("Andr\xC3\xA9"), ITAG_XDPI, 300,
                                               ITAG_YDPI, 72, ITAG_Orientation, 5}));
        EXPECT_EQ(textOf(back.image, ITAG_Artist), "Andr\xC3\xA9");
        EXPECT_EQ(tagsOf(back.image)[ITAG_XDPI], 300u);
        EXPECT_EQ(back.image.orientation, 5);
    }
}

TEST_F(Webp, StoresWhatIsSet) {
    const auto sizeWith = [&](const char* set) {
        settings_.store("webp", set);
        save<WebpSaver>(files_.path("a"), imageWords(64, 64, 3, VORN_CS_RGB), noiseOf(64 * 64 * 3));
        return files_.read("a").size();
    };
    EXPECT_LT(sizeWith("Quality=10"), sizeWith(""));
    EXPECT_LT(sizeWith(""), sizeWith("Lossless=true"));
    for (const char* bad : {"Quality=101", "Quality=-1", "Effort=7"})
        EXPECT_EQ(failureOf([&] { sizeWith(bad); }), formats::kBadOption) << bad;
}

// Two frames of one pixel, the second beside the first.
std::string animation() {
    WebPAnimEncoderOptions options;
    WebPAnimEncoderOptionsInit(&options);
    WebPAnimEncoder* encoder = WebPAnimEncoderNew(2, 1, &options);
    WebPConfig config;
    WebPConfigInit(&config);
    WebPConfigLosslessPreset(&config, 0);
    for (const uint32_t second : {0xFF000000u, 0xFF0000FFu}) {
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = 2;
        picture.height = 1;
        WebPPictureAlloc(&picture);
        picture.argb[0] = 0xFFFF0000;
        picture.argb[1] = second;
        WebPAnimEncoderAdd(encoder, &picture, second == 0xFF000000u ? 0 : 100, &config);
        WebPPictureFree(&picture);
    }
    WebPAnimEncoderAdd(encoder, nullptr, 200, nullptr);
    WebPData data;
    WebPAnimEncoderAssemble(encoder, &data);
    WebPAnimEncoderDelete(encoder);
    std::string file(reinterpret_cast<const char*>(data.bytes), data.size);
    WebPDataClear(&data);
    return file;
}

TEST_F(Webp, OpensTheWantedFrame) {
    const std::string path = files_.write("a.webp", animation());
    const LoadedImage second = load<WebpLoader>(path, {.page = 2});
    EXPECT_EQ(second.samples, (std::vector<uint8_t>{255, 0, 0, 255, 0, 0, 255, 255}));
    EXPECT_EQ(tagsOf(second.image)[ITAG_PageCount], 2u);
    EXPECT_EQ(failureOf([&] { load<WebpLoader>(path, {.page = 3}); }), formats::kNoSuchPage);
}

TEST_F(Webp, RefusesWhatIsNotRight) {
    for (const char* other : {"", "RIFF", "RIFF1234WAVE"})
        EXPECT_EQ(loadFailure<WebpLoader>(files_.write("a", other)), formats::kNotThisFormat);
    for (const auto& words :
         {imageWords(16384, 1, 3, VORN_CS_RGB), imageWords(1, 1, 3, VORN_CS_CMYK)})
        EXPECT_EQ(saveFailure<WebpSaver>(files_.path("b"), words), formats::kCannotSave);
}

}  // namespace
