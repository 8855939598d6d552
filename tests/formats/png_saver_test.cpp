#include "formats/png/png_saver.h"

#include <vorn/host.h>
#include <zlib.h>

#include "formats/common/layout.h"
#include "formats/png/png_loader.h"
#include "tests/formats/format_files.h"

namespace {

using png::PngLoader;
using png::PngSaver;

std::vector<VORN_Word> image(VORN_Word channels, VORN_Word colorSpace, VORN_Word bytes = 1) {
    return {ITAG_Width,      3,          ITAG_Height,           2,    ITAG_Channels, channels,
            ITAG_ColorSpace, colorSpace, ITAG_ImageChannelSize, bytes};
}

TEST(PngSaver, WhatItWritesReadsBackTheSame) {
    const ScratchDirectory files;
    const std::pair<VORN_Word, VORN_Word> kinds[] = {
        {1, VORN_CS_GRAY}, {2, VORN_CS_GRAY}, {3, VORN_CS_RGB}, {4, VORN_CS_RGB}};
    for (const auto& [channels, colorSpace] : kinds) {
        for (const VORN_Word bytes : {1, 2}) {
            SCOPED_TRACE(testing::Message() << channels << ' ' << bytes);
            const auto samples = noiseOf(3 * 2 * channels * bytes);
            save<PngSaver>(files.path("a.png"), image(channels, colorSpace, bytes), samples);
            const LoadedImage back = load<PngLoader>(files.path("a.png"));
            EXPECT_EQ(back.image.width, 3);
            EXPECT_EQ(back.image.height, 2);
            EXPECT_EQ(back.image.channels, static_cast<int32_t>(channels));
            EXPECT_EQ(back.image.colorSpace, static_cast<int32_t>(colorSpace));
            EXPECT_EQ(back.image.bytesPerChannel, static_cast<int32_t>(bytes));
            EXPECT_EQ(back.samples, samples);
        }
    }
}

// A palette tag whose entries are grey or RGB, of 8 or 16 bits.
struct PaletteTag {
    PaletteTag(std::vector<uint8_t> entries, int32_t channels, int32_t bytes, int32_t colorSpace) {
        const auto count = static_cast<int32_t>(entries.size()) / (channels * bytes);
        const VORN_ChunkyBuffer line =
            formats::interleavedBuffer(entries.data(), count, 1, channels, bytes);
        palette = VORN_H_CreatePaletteData(&line, colorSpace);
    }
    ~PaletteTag() { VORN_H_FreePaletteData(palette); }
    PaletteTag(const PaletteTag&) = delete;
    PaletteTag& operator=(const PaletteTag&) = delete;
    VORN_Word word() const { return reinterpret_cast<VORN_Word>(palette); }
    VORN_Palette* palette;
};

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
    const std::vector<uint8_t> indices{0, 1, 2, 2, 1, 0};
    const PaletteTag tags[] = {
        {{1, 2, 3, 4, 5, 6, 7, 8, 9}, 3, 1, VORN_CS_RGB},
        {{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8, 0, 9}, 3, 2, VORN_CS_RGB},
        {{50, 60, 70}, 1, 1, VORN_CS_GRAY}};
    const std::vector<uint8_t> wanted[] = {{1, 2, 3, 4, 5, 6, 7, 8, 9},
                                           {1, 2, 3, 4, 5, 6, 7, 8, 9},
                                           {50, 50, 50, 60, 60, 60, 70, 70, 70}};
    for (size_t i = 0; i < std::size(tags); ++i) {
        SCOPED_TRACE(i);
        auto description = image(1, VORN_CS_CMAPPED);
        description.insert(description.end(), {ITAG_Palette, tags[i].word()});
        save<PngSaver>(files.path("a.png"), description, indices);
        const LoadedImage back = load<PngLoader>(files.path("a.png"));
        EXPECT_EQ(back.image.colorSpace, VORN_CS_CMAPPED);
        EXPECT_EQ(back.samples, indices);
        EXPECT_EQ(paletteOf(back.image), wanted[i]);
        EXPECT_EQ(inspect(contentOf(files.path("a.png"))).filter, PNG_FILTER_VALUE_NONE);
    }
}

TEST(PngSaver, CompressesAndInterlacesAsSet) {
    const ScratchDirectory files;
    const UserSettings user;
    const auto samples = noiseOf(18);
    const auto writtenWith = [&](const char* settings) {
        SCOPED_TRACE(settings);
        user.store("png", settings);
        save<PngSaver>(files.path("a.png"), image(3, VORN_CS_RGB), samples);
        EXPECT_EQ(load<PngLoader>(files.path("a.png")).samples, samples);
        return inspect(contentOf(files.path("a.png")));
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

TEST(PngSaver, InterlacesEveryKindOfImage) {
    const ScratchDirectory files;
    const UserSettings user;
    user.store("png", "Interlace=true");
    const PaletteTag palette(std::vector<uint8_t>(768), 3, 1, VORN_CS_RGB);
    for (const VORN_Word bytes : {1, 2}) {
        const auto samples = noiseOf(24 * bytes);
        save<PngSaver>(files.path("a.png"), image(4, VORN_CS_RGB, bytes), samples);
        EXPECT_EQ(load<PngLoader>(files.path("a.png")).samples, samples);
    }
    auto description = image(1, VORN_CS_CMAPPED);
    description.insert(description.end(), {ITAG_Palette, palette.word()});
    save<PngSaver>(files.path("a.png"), description, noiseOf(6));
    EXPECT_EQ(load<PngLoader>(files.path("a.png")).samples, noiseOf(6));
}

TEST(PngSaver, RefusesSettingsItDoesntKnow) {
    const ScratchDirectory files;
    const UserSettings user;
    const std::string path = files.write("a.png", "before");
    for (const char* settings : {"CompressionLevel=10", "CompressionLevel=fast", "Filter=sharp",
                                 "Filter=none\nStrategy=0", "Interlace=2"}) {
        user.store("png", settings);
        EXPECT_EQ(failureOf([&] { save<PngSaver>(path, image(3, VORN_CS_RGB), noiseOf(18)); }),
                  formats::kBadOption)
            << settings;
    }
    EXPECT_EQ(contentOf(path), "before");
}

TEST(PngSaver, RefusesWhatTheFormatCannotHold) {
    const ScratchDirectory files;
    const std::string path = files.write("a.png", "before");
    const auto failure = [&](std::vector<VORN_Word> description) {
        return failureOf([&] { save<PngSaver>(path, std::move(description), {}); });
    };
    EXPECT_EQ(failure(image(4, VORN_CS_CMYK)), formats::kCannotSave);
    EXPECT_EQ(failure(image(3, VORN_CS_YUV601)), formats::kCannotSave);
    EXPECT_EQ(failure(image(5, VORN_CS_NONE)), formats::kCannotSave);
    EXPECT_EQ(failure(image(1, VORN_CS_CMAPPED)), formats::kCannotSave);
    const PaletteTag tooLarge(std::vector<uint8_t>(257 * 3), 3, 1, VORN_CS_RGB);
    auto description = image(1, VORN_CS_CMAPPED);
    description.insert(description.end(), {ITAG_Palette, tooLarge.word()});
    EXPECT_EQ(failure(description), formats::kCannotSave);
    description[9] = 2;  // indices of 16 bits
    EXPECT_EQ(failure(description), formats::kCannotSave);
    EXPECT_EQ(contentOf(path), "before");
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
    save<PngSaver>(files.path("a.png"), description, noiseOf(6));

    const auto back = load<PngLoader>(files.path("a.png")).image;
    std::vector<std::pair<uint32_t, std::string>> texts_back;
    std::vector<VORN_Word> numbers;
    const auto& words = back.tags.words();
    for (size_t i = 0; i + 1 < words.size(); i += 2) {
        if (VORN_TAG_TYPE(words[i]) == VORN_TYPE_STRING)
            texts_back.emplace_back(words[i], reinterpret_cast<const char*>(words[i + 1]));
        else
            numbers.insert(numbers.end(), {words[i], words[i + 1]});
    }
    EXPECT_EQ(numbers, (std::vector<VORN_Word>{ITAG_XDPI, 300, ITAG_YDPI, 72}));
    EXPECT_EQ(texts_back,
              (std::vector<std::pair<uint32_t, std::string>>(std::begin(texts), std::end(texts))));
}

TEST(PngSaver, KeepsThePixelAspect) {
    const ScratchDirectory files;
    auto description = image(1, VORN_CS_GRAY);
    description.insert(description.end(), {ITAG_XAspect, 4, ITAG_YAspect, 3});
    save<PngSaver>(files.path("a.png"), description, noiseOf(6));
    EXPECT_EQ(load<PngLoader>(files.path("a.png")).image.tags.words(),
              (std::vector<VORN_Word>{ITAG_XAspect, 4, ITAG_YAspect, 3}));
}

TEST(PngSaver, SaysWhyTheFileCannotBeWritten) {
    // The device that is always full.
    EXPECT_EQ(failureOf([] { save<PngSaver>("/dev/full", image(3, VORN_CS_RGB), noiseOf(18)); }),
              formats::kCannotWrite);
}

}  // namespace
