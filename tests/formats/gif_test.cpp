#include <set>

#include "formats/gif/gif_loader.h"
#include "formats/gif/gif_saver.h"
#include "tests/formats/format_files.h"

namespace {

using gif::GifLoader;
using gif::GifSaver;

// Frames and what is left of them are compared with real files; here is what the saver makes.
using Gif = FormatTest;

TEST_F(Gif, KeepsGreysAndFewColoursAndChoosesAmongMany) {
    const Bytes greys = noiseOf(200 * 30);
    save<GifSaver>(files_.path("a.gif"), imageWords(200, 30, 1, VORN_CS_GRAY), greys);
    EXPECT_EQ(load<GifLoader>(files_.path("a.gif")).samples, greys);

    const Bytes few{255, 0, 0, 255, 0, 255, 0, 200, 9, 9, 9, 0, 255, 0, 0, 128};
    save<GifSaver>(files_.path("a.gif"), imageWords(4, 1, 4, VORN_CS_RGB), few);
    const LoadedImage back = load<GifLoader>(files_.path("a.gif"));
    ASSERT_EQ(back.image.channels, 4);
    EXPECT_EQ(back.samples, (Bytes{255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 0, 0, 255, 0, 0, 255}));

    Bytes many;
    for (unsigned y = 0; y < 64; ++y) {
        for (unsigned x = 0; x < 64; ++x)
            many.insert(many.end(), {static_cast<uint8_t>(4 * x), static_cast<uint8_t>(4 * y), 50});
    }
    save<GifSaver>(files_.path("a.gif"), imageWords(64, 64, 3, VORN_CS_RGB), many);
    const LoadedImage chosen = load<GifLoader>(files_.path("a.gif"));
    const Bytes colors = paletteOf(chosen.image);
    EXPECT_GT(std::set<uint8_t>(chosen.samples.begin(), chosen.samples.end()).size(), 200u);
    for (size_t i = 0; i < chosen.samples.size(); ++i) {
        for (size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(colors[3 * chosen.samples[i] + c], many[3 * i + c], 32);
    }
}

TEST_F(Gif, HasOnePage) {
    save<GifSaver>(files_.path("a"), imageWords(1, 1, 1, VORN_CS_GRAY), {7});
    EXPECT_EQ(tagsOf(load<GifLoader>(files_.path("a")).image)[ITAG_PageCount], 1u);
    for (const int32_t page : {0, 2})
        EXPECT_EQ(failureOf([&] { load<GifLoader>(files_.path("a"), {.page = page}); }),
                  formats::kNoSuchPage);
}

}  // namespace
