#include "formats/png/png_saver.h"

#include <zlib.h>

#include "formats/png/png_loader.h"
#include "formats/png/png_text.h"
#include "tests/formats/format_files.h"

namespace {

using png::PngLoader;
using png::PngSaver;

std::vector<VORN_Word> image(VORN_Word channels,
                             VORN_Word colorSpace,
                             VORN_Word bytes = 1,
                             const std::vector<VORN_Word>& more = {}) {
    return imageWords(3, 2, channels, colorSpace, bytes, more);
}

LoadedImage kept(const ScratchDirectory& files,
                 const std::vector<VORN_Word>& words,
                 const Bytes& samples = {}) {
    return throughFile<PngSaver, PngLoader>(files.path("a.png"), words, samples);
}

struct Written {
    bool interlaced;
    int levelClass;  // 0 to 3, from the zlib header
    int blockType;   // of the first deflate block: 0 stored, 1 fixed codes
    int filter;      // of the second line
};

Written inspect(const std::string& file) {
    const std::vector<uint8_t> bytes = bytesOf(file);
    const size_t data = file.find("IDAT") + 4;
    const auto size = static_cast<uLong>(bytes[data - 6] << 8 | bytes[data - 5]);
    uint8_t lines[256];
    uLongf length = sizeof lines;
    EXPECT_EQ(uncompress(lines, &length, &bytes[data], size), Z_OK);
    return {bytes[28] == 1, bytes[data + 1] >> 6, bytes[data + 2] >> 1 & 3, lines[length / 2]};
}

TEST(PngSaver, WritesIndicesWithTheirPalette) {
    const ScratchDirectory files;
    const PaletteTag tags[] = {
        {{1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0, 9}, 3, 2, VORN_CS_RGB},
        {{50, 60, 70}, 1, 1, VORN_CS_GRAY}};
    const Bytes wanted[] = {{1, 2, 3, 4, 5, 6, 7, 8, 9},
                            {1, 2, 3, 4, 5, 6, 7, 8, 9},
                            {50, 50, 50, 60, 60, 60, 70, 70, 70}};
    for (size_t i = 0; i < std::size(tags); ++i) {
        const LoadedImage back =
            kept(files, image(1, VORN_CS_CMAPPED, 1, {ITAG_Palette, tags[i]}), {0, 1, 2, 2, 1, 0});
        EXPECT_EQ(paletteOf(back.image), wanted[i]);
        EXPECT_EQ(inspect(files.read("a.png")).filter, PNG_FILTER_VALUE_NONE);
    }
}

TEST(PngSaver, CompressesAndInterlacesAsSet) {
    const ScratchDirectory files;
    const UserSettings user;
    const auto writtenWith = [&](const char* settings) {
        SCOPED_TRACE(settings);
        user.store("png", settings);
        kept(files, image(3, VORN_CS_RGB));
        return inspect(files.read("a.png"));
    };
    const Written standard = writtenWith("Unknown=1");
    EXPECT_FALSE(standard.interlaced);
    EXPECT_EQ(standard.levelClass, 2);
    EXPECT_EQ(standard.filter, PNG_FILTER_VALUE_PAETH);
    const char* filters[] = {"none", "sub", "up", "average", "paeth"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(writtenWith((std::string("Filter=") + filters[i]).c_str()).filter, i);
    }
    for (const char* settings : {"Filter=fast", "Filter=all", "Strategy=default",
                                 "Strategy=filtered", "Strategy=huffman", "Strategy=rle"}) {
        writtenWith(settings);
    }
    EXPECT_EQ(writtenWith("Strategy=fixed").blockType, 1);
    EXPECT_EQ(writtenWith("CompressionLevel=0").blockType, 0);
    EXPECT_EQ(writtenWith("CompressionLevel=9").levelClass, 3);
    EXPECT_TRUE(writtenWith("interlace=ON\nFilter=up").interlaced);
}

TEST(PngSaver, KeepsEveryKindOfImagePlainAndInterlaced) {
    const ScratchDirectory files;
    const UserSettings user;
    const PaletteTag palette(Bytes(768));
    for (const char* settings : {"", "Interlace=true"}) {
        user.store("png", settings);
        for (const VORN_Word channels : {1, 2, 3, 4}) {
            for (const VORN_Word bytes : {1, 2})
                kept(files, image(channels, channels < 3 ? VORN_CS_GRAY : VORN_CS_RGB, bytes));
        }
        kept(files, image(1, VORN_CS_CMAPPED, 1, {ITAG_Palette, palette}));
    }
}

TEST(PngSaver, RefusesSettingsItDoesntKnow) {
    const ScratchDirectory files;
    const UserSettings user;
    const std::string path = files.write("a.png", "before");
    for (const char* settings : {"CompressionLevel=10", "CompressionLevel=fast", "Filter=sharp",
                                 "Filter=none\nStrategy=0", "Interlace=2"}) {
        user.store("png", settings);
        EXPECT_EQ(saveFailure<PngSaver>(path, image(3, VORN_CS_RGB)), formats::kBadOption)
            << settings;
    }
    EXPECT_EQ(contentOf(path), "before");
}

TEST(PngSaver, RefusesWhatTheFormatCannotHold) {
    const ScratchDirectory files;
    const std::string path = files.write("a.png", "before");
    const PaletteTag palette(Bytes(6)), tooLarge(Bytes(257 * 3));
    for (const auto& words :
         {image(4, VORN_CS_CMYK), image(3, VORN_CS_YUV601), image(5, VORN_CS_NONE),
          image(1, VORN_CS_CMAPPED), image(1, VORN_CS_CMAPPED, 1, {ITAG_Palette, tooLarge}),
          image(1, VORN_CS_CMAPPED, 2, {ITAG_Palette, palette})})
        EXPECT_EQ(saveFailure<PngSaver>(path, words), formats::kCannotSave);
    EXPECT_EQ(contentOf(path), "before");
    EXPECT_EQ(saveFailure<PngSaver>("/dev/full", image(3, VORN_CS_RGB), noiseOf(18)),
              formats::kCannotWrite);
}

TEST(PngSaver, KeepsTextsAndResolution) {
    const ScratchDirectory files;
    const std::pair<uint32_t, std::string> texts[] = {
        {ITAG_Artist, "Andr\xC3\xA9"},
        {ITAG_DateTime, "2024:05:06 07:08:09"},
        {ITAG_HostComputer, "a computer"},
        {ITAG_Description, "\xE7\x8C\xAB, a cat\nasleep"},
        {ITAG_Make, "maker"},
        {ITAG_Model, "camera"},
        {ITAG_Software, "VORN"},
        {ITAG_DocumentName, std::string(3000, 't')},
        {ITAG_PageName, "\xFF not any known encoding"}};
    auto description = image(1, VORN_CS_GRAY);
    for (const auto& [id, value] : texts) description.insert(description.end(), {id, word(value)});
    description.insert(description.end(), {ITAG_XDPI, 300, ITAG_YDPI, 72});
    const auto back = kept(files, description).image;
    for (const auto& [id, value] : texts) EXPECT_EQ(textOf(back, id), value);
    EXPECT_EQ(tagsOf(back).size(), std::size(texts) + 2);
    EXPECT_EQ(tagsOf(back)[ITAG_XDPI], 300u);
    EXPECT_EQ(tagsOf(back)[ITAG_YDPI], 72u);
    EXPECT_EQ(kept(files, image(1, VORN_CS_GRAY, 1, {ITAG_XAspect, 4, ITAG_YAspect, 3}))
                  .image.tags.words(),
              (std::vector<VORN_Word>{ITAG_XAspect, 4, ITAG_YAspect, 3}));
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
