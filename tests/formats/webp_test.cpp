#include <webp/mux.h>

#include "formats/webp/webp_loader.h"
#include "tests/formats/format_files.h"

namespace {

using webp::WebpLoader;

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

TEST(Webp, OpensTheWantedFrame) {
    const ScratchDirectory files;
    const std::string path = files.write("a.webp", animation());
    const LoadedImage second = load<WebpLoader>(path, {.page = 2});
    EXPECT_EQ(second.samples, (std::vector<uint8_t>{255, 0, 0, 255, 0, 0, 255, 255}));
    EXPECT_EQ(tagsOf(second.image)[ITAG_PageCount], 2u);
    EXPECT_EQ(failureOf([&] { load<WebpLoader>(path, {.page = 3}); }), formats::kNoSuchPage);
}

}  // namespace
