#include <set>

#include "formats/gif/gif_loader.h"
#include "formats/gif/gif_saver.h"
#include "tests/formats/format_files.h"

namespace {

using gif::GifLoader;
using gif::GifSaver;

// Frames and what is left of them are compared with real files; here is what the saver makes.
TEST(Gif, KeepsIndicesAndGreys) {
    const ScratchDirectory files;
    Bytes entries{1, 2, 3, 40, 50, 60, 7, 8, 9};
    const PaletteTag palette(entries);
    const LoadedImage indexed = throughFile<GifSaver, GifLoader>(
        files.path("a.gif"),
        imageWords(3, 2, 1, VORN_CS_CMAPPED, 1,
                   {ITAG_Palette, palette, ITAG_Description, word("caf\xC3\xA9")}),
        {0, 1, 2, 2, 1, 0});
    entries.insert(entries.end(), 3, 0);  // palettes have a power of two of entries
    EXPECT_EQ(paletteOf(indexed.image), entries);
    EXPECT_EQ(textOf(indexed.image, ITAG_Description), "caf\xC3\xA9");
    EXPECT_EQ(tagsOf(indexed.image)[ITAG_PageCount], 1u);

    const Bytes greys = noiseOf(200 * 30);
    save<GifSaver>(files.path("a.gif"), imageWords(200, 30, 1, VORN_CS_GRAY), greys);
    EXPECT_EQ(load<GifLoader>(files.path("a.gif")).samples, greys);
}

TEST(Gif, KeepsFewColoursAndChoosesAmongMany) {
    const ScratchDirectory files;
    const Bytes few{255, 0, 0, 255, 0, 255, 0, 200, 9, 9, 9, 0, 255, 0, 0, 128};
    save<GifSaver>(files.path("a.gif"), imageWords(4, 1, 4, VORN_CS_RGB), few);
    const LoadedImage back = load<GifLoader>(files.path("a.gif"));
    ASSERT_EQ(back.image.channels, 4);
    EXPECT_EQ(back.samples, (Bytes{255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 0, 0, 255, 0, 0, 255}));

    Bytes many;
    for (unsigned y = 0; y < 64; ++y) {
        for (unsigned x = 0; x < 64; ++x)
            many.insert(many.end(), {static_cast<uint8_t>(4 * x), static_cast<uint8_t>(4 * y), 50});
    }
    save<GifSaver>(files.path("a.gif"), imageWords(64, 64, 3, VORN_CS_RGB), many);
    const LoadedImage chosen = load<GifLoader>(files.path("a.gif"));
    const Bytes colors = paletteOf(chosen.image);
    EXPECT_GT(std::set<uint8_t>(chosen.samples.begin(), chosen.samples.end()).size(), 200u);
    for (size_t i = 0; i < chosen.samples.size(); ++i) {
        for (size_t c = 0; c < 3; ++c)
            EXPECT_NEAR(colors[3 * chosen.samples[i] + c], many[3 * i + c], 32);
    }
}

TEST(Gif, RefusesWhatIsNotRight) {
    const ScratchDirectory files;
    for (const char* other : {"", "GIF89", "GIF88a and more"})
        EXPECT_EQ(loadFailure<GifLoader>(files.write("a", other)), formats::kNotThisFormat);
    save<GifSaver>(files.path("a"), imageWords(1, 1, 1, VORN_CS_GRAY), {7});
    for (const int32_t page : {0, 2})
        EXPECT_EQ(failureOf([&] { load<GifLoader>(files.path("a"), {.page = page}); }),
                  formats::kNoSuchPage);
    for (const VORN_Word colorSpace : {VORN_CS_CMAPPED, VORN_CS_CMYK})
        EXPECT_EQ(saveFailure<GifSaver>(files.path("b"), imageWords(1, 1, 1, colorSpace)),
                  formats::kCannotSave);
}

}  // namespace
