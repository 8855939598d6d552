#include <vorn/host.h>

#include "formats/bmp/bmp_loader.h"
#include "formats/bmp/bmp_saver.h"
#include "formats/common/layout.h"
#include "formats/common/little_endian.h"
#include "tests/formats/format_files.h"

namespace {

using bmp::BmpLoader;
using bmp::BmpSaver;
using formats::putLittleEndian;

// A file with a head of 40 bytes; `behind` are masks or palette, and then the pixels.
std::string file(int width,
                 int height,
                 uint32_t bits,
                 uint32_t compression,
                 const std::vector<uint8_t>& behind,
                 const std::vector<uint8_t>& pixels) {
    std::vector<uint8_t> bytes{'B', 'M'};
    putLittleEndian(bytes, 0, 8);
    putLittleEndian(bytes, static_cast<uint32_t>(54 + behind.size()), 4);
    putLittleEndian(bytes, 40, 4);
    putLittleEndian(bytes, static_cast<uint32_t>(width), 4);
    putLittleEndian(bytes, static_cast<uint32_t>(height), 4);
    putLittleEndian(bytes, 1, 2);
    putLittleEndian(bytes, bits, 2);
    putLittleEndian(bytes, compression, 4);
    putLittleEndian(bytes, 0, 4);
    putLittleEndian(bytes, 11811, 4);
    putLittleEndian(bytes, 2835, 4);
    putLittleEndian(bytes, static_cast<uint32_t>(bits <= 8 ? behind.size() / 4 : 0), 4);
    putLittleEndian(bytes, 0, 4);
    bytes.insert(bytes.end(), behind.begin(), behind.end());
    bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    return {bytes.begin(), bytes.end()};
}

const std::vector<uint8_t> kFourColors{3, 2, 1, 0, 6, 5, 4, 0, 9, 8, 7, 0, 12, 11, 10, 0};

struct Case {
    const char* what;
    std::string file;
    int32_t orientation;
    std::vector<uint8_t> samples;
};

const Case kCases[] = {
    {"1 bit",
     file(9, 1, 1, 0, {kFourColors.begin(), kFourColors.begin() + 8}, {0xA0, 0x80, 0, 0}),
     0,
     {1, 0, 1, 0, 0, 0, 0, 0, 1}},
    {"2 bits", file(3, 1, 2, 0, kFourColors, {0x1B, 0, 0, 0}), 0, {0, 1, 2}},
    {"4 bits, the top line first",
     file(3, -2, 4, 0, kFourColors, {0x12, 0x30, 0, 0, 0x01, 0, 0, 0}),
     0,
     {1, 2, 3, 0, 1, 0}},
    {"8 bits", file(1, 2, 8, 0, kFourColors, {3, 0, 0, 0, 1, 0, 0, 0}), 0, {1, 3}},
    {"5 bits a channel",
     file(2, 1, 16, 0, {}, {0x1F, 0x7C, 0xE0, 0x03}),
     0,
     {255, 0, 255, 0, 255, 0}},
    {"5, 6 and 5 bits",
     file(1, 1, 16, 3, {0, 0xF8, 0, 0, 0xE0, 7, 0, 0, 0x1F, 0, 0, 0}, {0x00, 0x84, 0, 0}),
     0,
     {132, 130, 0}},
    {"24 bits", file(1, 1, 24, 0, {}, {1, 2, 3, 0}), 0, {3, 2, 1}},
    {"32 bits, of which 8 mean nothing", file(1, 1, 32, 0, {}, {1, 2, 3, 77}), 0, {3, 2, 1}},
    {"32 bits with alpha",
     file(1, 1, 32, 6, {0xFF, 0, 0, 0, 0, 0xFF, 0, 0, 0, 0, 0xFF, 0, 0, 0, 0, 0xFF}, {1, 2, 3, 77}),
     0,
     {1, 2, 3, 77}},
    {"runs of bytes",
     file(4, 3, 8, 1, kFourColors, {3, 2, 0, 0, 0, 3, 1, 2, 3, 0, 0, 0, 9, 1, 0, 1}),
     6,
     {2, 2, 2, 0, 1, 2, 3, 0, 1, 1, 1, 1}},
    {"runs of half bytes", file(5, 1, 4, 2, kFourColors, {3, 0x12, 0, 1}), 6, {1, 2, 1, 0, 0}},
    {"literal half bytes",
     file(5, 1, 4, 2, kFourColors, {0, 5, 0x12, 0x31, 0x20, 0, 0, 1}),
     6,
     {1, 2, 3, 1, 2}},
    {"runs that skip",
     file(3, 4, 8, 1, kFourColors, {1, 3, 0, 2, 1, 2, 1, 2, 0, 0, 1, 1, 0, 1}),
     6,
     {3, 0, 0, 0, 0, 0, 0, 0, 2, 1, 0, 0}},
};

TEST(BmpLoader, ReadsEveryKind) {
    const ScratchDirectory files;
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<BmpLoader>(files.write("a", c.file));
        EXPECT_EQ(got.samples, c.samples);
        EXPECT_EQ(got.image.orientation, c.orientation);
        EXPECT_EQ(tagsOf(got.image)[ITAG_XDPI], 300u);
        EXPECT_EQ(tagsOf(got.image)[ITAG_YDPI], 72u);
        if (got.image.colorSpace == VORN_CS_CMAPPED) {
            EXPECT_EQ(paletteOf(got.image)[5], 6);
        }
    }
}

TEST(BmpLoader, RefusesWhatIsNotRight) {
    const std::pair<std::string, int32_t> cases[] = {
        {"", formats::kNotThisFormat},
        {"BM", formats::kNotThisFormat},
        {"GIF89a and so on and so on", formats::kNotThisFormat},
        {file(0, 1, 24, 0, {}, {}), formats::kDamaged},
        {file(1, 0, 24, 0, {}, {}), formats::kDamaged},
        {file(65537, 1, 24, 0, {}, {}), formats::kUnsupported},
        {file(1, INT32_MIN, 24, 0, {}, {}), formats::kUnsupported},
        {file(1, 1, 7, 0, kFourColors, {}), formats::kUnsupported},
        {file(1, 1, 24, 4, {}, {}), formats::kUnsupported},
        {file(1, 1, 16, 3, {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0}),
         formats::kUnsupported},
        {file(1, 1, 8, 1, kFourColors, {1}), formats::kDamaged},
        {file(1, 2, 24, 0, {}, {1, 2, 3, 0, 1, 2}), formats::kDamaged}};
    const ScratchDirectory files;
    for (const auto& [bytes, code] : cases)
        EXPECT_EQ(loadFailure<BmpLoader>(files.write("a", bytes)), code);
}

TEST(BmpSaver, WhatItWritesReadsBackTheSame) {
    const ScratchDirectory files;
    for (const VORN_Word channels : {3, 4}) {
        for (const VORN_Word height : {1, 500}) {  // more lines than one block holds
            const size_t lineBytes = 301 * channels;
            const auto samples = noiseOf(lineBytes * height);
            auto words = imageWords(301, height, channels, VORN_CS_RGB);
            words.insert(words.end(), {ITAG_XDPI, 300});
            save<BmpSaver>(files.path("a.bmp"), words, samples);
            const LoadedImage back = load<BmpLoader>(files.path("a.bmp"));
            ASSERT_EQ(back.image.channels, static_cast<int32_t>(channels));
            EXPECT_EQ(tagsOf(back.image)[ITAG_YDPI], 300u);
            EXPECT_TRUE(back.samples == samples);
        }
    }
}

TEST(BmpSaver, WritesGreyAndIndicesWithAPalette) {
    const ScratchDirectory files;
    save<BmpSaver>(files.path("a.bmp"), imageWords(3, 1, 1, VORN_CS_GRAY), {0, 100, 255});
    EXPECT_EQ(load<BmpLoader>(files.path("a.bmp")).samples, (std::vector<uint8_t>{0, 100, 255}));
    EXPECT_EQ(paletteOf(load<BmpLoader>(files.path("a.bmp")).image)[300], 100);
    save<BmpSaver>(files.path("a.bmp"), imageWords(1, 1, 2, VORN_CS_GRAY), {100, 50});
    EXPECT_EQ(load<BmpLoader>(files.path("a.bmp")).samples,
              (std::vector<uint8_t>{100, 100, 100, 50}));
    for (const VORN_Word colorSpace : {VORN_CS_CMAPPED, VORN_CS_CMYK})
        EXPECT_EQ(failureOf([&] {
                      save<BmpSaver>(files.path("b"), imageWords(1, 1, 1, colorSpace), {});
                  }),
                  formats::kCannotSave);
}

}  // namespace
