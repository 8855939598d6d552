#include "formats/png/png_saver.h"

#include <zlib.h>

#include "formats/png/png_loader.h"
#include "formats/png/png_text.h"
#include "tests/formats/format_files.h"

namespace {

using png::PngLoader;
using png::PngSaver;

using PngSaving = FormatTest;

struct Written {
    bool interlaced;
    int levelClass;  // 0 to 3, from the zlib header
    int blockType;   // of the first deflate block: 0 stored, 1 fixed codes
    int filter;      // of the second line
};

Written inspect(const std::string& file) {
    const Bytes bytes = bytesOf(file);
    const size_t data = file.find("IDAT") + 4;
    const auto size = static_cast<uLong>(bytes[data - 6] << 8 | bytes[data - 5]);
    uint8_t lines[256];
    uLongf length = sizeof lines;
    EXPECT_EQ(uncompress(lines, &length, &bytes[data], size), Z_OK);
    return {bytes[28] == 1, bytes[data + 1] >> 6, bytes[data + 2] >> 1 & 3, lines[length / 2]};
}

TEST_F(PngSaving, TakesPalettesOfAnyKindThatHaveRoom) {
    const auto words = [](const PaletteTag& palette, VORN_Word bytes = 1) {
        return imageWords(3, 2, 1, VORN_CS_CMAPPED, bytes, {ITAG_Palette, palette});
    };
    const std::string path = files_.path("a.png");
    const PaletteTag deep({0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6}, 3, 2, VORN_CS_RGB),
        grey({50, 60}, 1, 1, VORN_CS_GRAY), tooLarge(Bytes(257 * 3));
    const auto saved = [&](const PaletteTag& palette) {
        return paletteOf(
            throughFile<PngSaver, PngLoader>(path, words(palette), {0, 1, 1, 1, 1, 0}).image);
    };
    EXPECT_EQ(saved(deep), (Bytes{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(saved(grey), (Bytes{50, 50, 50, 60, 60, 60}));
    EXPECT_EQ(inspect(files_.read("a.png")).filter, PNG_FILTER_VALUE_NONE);
    EXPECT_EQ(saveFailure<PngSaver>(path, words(tooLarge)), formats::kCannotSave);
    EXPECT_EQ(saveFailure<PngSaver>(path, words(grey, 2)), formats::kCannotSave);
}

TEST_F(PngSaving, CompressesAndInterlacesAsSet) {
    const auto writtenWith = [&](const std::string& settings) {
        SCOPED_TRACE(settings);
        settings_.store("png", settings.c_str());
        throughFile<PngSaver, PngLoader>(files_.path("a.png"), imageWords(3, 2, 3, VORN_CS_RGB));
        return inspect(files_.read("a.png"));
    };
    const Written standard = writtenWith("Unknown=1");
    EXPECT_FALSE(standard.interlaced);
    EXPECT_EQ(standard.levelClass, 2);
    EXPECT_EQ(standard.filter, PNG_FILTER_VALUE_PAETH);
    const char* filters[] = {"none", "sub", "up", "average", "paeth"};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(writtenWith(std::string("Filter=") + filters[i]).filter, i);
    for (const char* settings : {"Filter=fast", "Filter=all", "Strategy=default",
                                 "Strategy=filtered", "Strategy=huffman", "Strategy=rle"})
        writtenWith(settings);
    EXPECT_EQ(writtenWith("Strategy=fixed").blockType, 1);
    EXPECT_EQ(writtenWith("CompressionLevel=0").blockType, 0);
    EXPECT_EQ(writtenWith("CompressionLevel=9").levelClass, 3);
    EXPECT_TRUE(writtenWith("interlace=ON\nFilter=up").interlaced);
}

TEST_F(PngSaving, KeepsLongTextsAndThoseOfNoKnownEncoding) {
    const std::string title(3000, 't');
    const formats::Description image =
        throughFile<PngSaver, PngLoader>(files_.path("a.png"),
                                         imageWords(3, 2, 1, VORN_CS_GRAY, 1,
                                                    {ITAG_DocumentName, word(title), ITAG_PageName,
                                                     word("\xFF not any known encoding")}))
            .image;
    EXPECT_EQ(textOf(image, ITAG_DocumentName), title);
    EXPECT_EQ(textOf(image, ITAG_PageName), "\xFF not any known encoding");
    EXPECT_EQ(tagsOf(image).size(), 2u);
}

TEST(PngText, TurnsLatin1IntoUtf8AndBack) {
    std::string all;
    for (int code = 1; code < 256; ++code) all.push_back(static_cast<char>(code));
    std::string back;
    ASSERT_TRUE(png::latin1FromUtf8(png::utf8FromLatin1(all), back));
    EXPECT_EQ(back, all);
    for (const char* beyond :
         {"\xE7\x8C\xAB", "\xC4\x80", "\xC0\x80", "\xC3", "\xC3x", "\xFF", "\x80"})
        EXPECT_FALSE(png::latin1FromUtf8(beyond, back)) << beyond;
}

TEST(PngText, CutsBetweenCharacters) {
    std::string text = "a\xC3\xA9\xE7\x8C\xAB";
    png::cutUtf8(text, 6);
    EXPECT_EQ(text, "a\xC3\xA9\xE7\x8C\xAB");
    png::cutUtf8(text, 5);
    EXPECT_EQ(text, "a\xC3\xA9");
    png::cutUtf8(text, 2);
    EXPECT_EQ(text, "a");
    png::cutUtf8(text, 0);
    EXPECT_EQ(text, "");
}

}  // namespace
