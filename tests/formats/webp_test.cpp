#include <vorn/host.h>
#include <webp/mux.h>

#include "formats/webp/webp_loader.h"
#include "formats/webp/webp_saver.h"
#include "tests/formats/format_files.h"

namespace {

using webp::WebpLoader;
using webp::WebpSaver;

class Webp : public testing::Test {
  protected:
    ScratchDirectory files_;
    ScopedVariable config_{"XDG_CONFIG_HOME", files_.path("config").c_str()};
};

TEST_F(Webp, KeepsEveryPixelWithoutLossAndTextsAndOrientation) {
    VORN_H_ModuleStoreParameters("webp", VORN_SAVER, "Lossless=true");
    for (const VORN_Word channels : {3, 4}) {
        auto words = imageWords(31, 17, channels, VORN_CS_RGB);
        words.insert(words.end(), {ITAG_Artist, word("Andr\xC3\xA9"), ITAG_XDPI, 300, ITAG_YDPI, 72,
                                   ITAG_Orientation, 5});
        const auto samples = noiseOf(31 * 17 * channels);
        save<WebpSaver>(files_.path("a.webp"), words, samples);
        const LoadedImage back = load<WebpLoader>(files_.path("a.webp"));
        EXPECT_EQ(back.image.channels, static_cast<int32_t>(channels));
        EXPECT_EQ(back.samples, samples);
        EXPECT_EQ(textOf(back.image, ITAG_Artist), "Andr\xC3\xA9");
        EXPECT_EQ(tagsOf(back.image)[ITAG_XDPI], 300u);
        EXPECT_EQ(back.image.orientation, 5);
    }
}

TEST_F(Webp, StoresWhatIsSet) {
    const auto sizeWith = [&](const char* settings) {
        VORN_H_ModuleStoreParameters("webp", VORN_SAVER, settings);
        save<WebpSaver>(files_.path("a"), imageWords(64, 64, 3, VORN_CS_RGB), noiseOf(64 * 64 * 3));
        return contentOf(files_.path("a")).size();
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
    for (const auto& [width, colorSpace] : {std::pair{16384, VORN_CS_RGB}, {1, VORN_CS_CMYK}})
        EXPECT_EQ(failureOf([&, w = width, c = colorSpace] {
                      save<WebpSaver>(
                          files_.path("b"),
                          imageWords(static_cast<VORN_Word>(w), 1, 3, static_cast<VORN_Word>(c)),
                          {});
                  }),
                  formats::kCannotSave);
}

}  // namespace
