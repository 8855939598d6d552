#include <vorn/host.h>

#include <algorithm>
#include <iterator>

#include "formats/common/layout.h"
#include "formats/tga/tga_loader.h"
#include "formats/tga/tga_saver.h"
#include "tests/formats/format_files.h"

namespace {

using tga::TgaLoader;
using tga::TgaSaver;
using Bytes = std::vector<uint8_t>;

Bytes file(uint8_t mapKind,
           uint8_t kind,
           uint8_t entries,
           uint8_t entryBits,
           uint8_t width,
           uint8_t height,
           uint8_t bits,
           uint8_t descriptor,
           const Bytes& behind) {
    Bytes bytes{0, mapKind, kind, 0,     0, entries, 0, entryBits, 0,
                0, 0,       0,    width, 0, height,  0, bits,      descriptor};
    std::ranges::copy(behind, std::back_inserter(bytes));
    return bytes;
}

struct Case {
    const char* what;
    Bytes file;
    int32_t orientation, colorSpace;
    bool alpha;
    Bytes samples;
};

const Case kCases[] = {
    {"grey", file(0, 3, 0, 0, 2, 1, 8, 0x20, {5, 9}), 0, VORN_CS_GRAY, false, {5, 9}},
    {"grey with alpha", file(0, 3, 0, 0, 1, 1, 16, 0x28, {5, 9}), 0, VORN_CS_GRAY, true, {5, 9}},
    {"15 bits", file(0, 2, 0, 0, 1, 1, 15, 0, {0x1F, 0x40}), 0, VORN_CS_RGB, false, {132, 0, 255}},
    {"16 bits, one of them alpha",
     file(0, 2, 0, 0, 2, 1, 16, 0x31, {0, 0x80, 0, 0}),
     4,
     VORN_CS_RGB,
     true,
     {0, 0, 0, 255, 0, 0, 0, 0}},
    {"24 bits, from the bottom right",
     file(0, 2, 0, 0, 1, 2, 24, 0x10, {1, 2, 3, 4, 5, 6}),
     4,
     VORN_CS_RGB,
     false,
     {6, 5, 4, 3, 2, 1}},
    {"indices from the bottom left",
     file(1, 1, 2, 24, 1, 2, 8, 0, {1, 2, 3, 4, 5, 6, 1, 0}),
     0,
     VORN_CS_CMAPPED,
     false,
     {0, 1}},
    {"a run from the bottom left",
     file(0, 11, 0, 0, 2, 1, 8, 0, {0x81, 7}),
     6,
     VORN_CS_GRAY,
     false,
     {7, 7}},
    {"32 bits without alpha",
     file(0, 2, 0, 0, 1, 1, 32, 0x20, {1, 2, 3, 4}),
     0,
     VORN_CS_RGB,
     false,
     {3, 2, 1}},
    {"32 bits with alpha",
     file(0, 2, 0, 0, 1, 1, 32, 0x28, {1, 2, 3, 4}),
     0,
     VORN_CS_RGB,
     true,
     {3, 2, 1, 4}},
    {"indices",
     file(1, 1, 2, 24, 2, 1, 8, 0x20, {1, 2, 3, 4, 5, 6, 1, 0}),
     0,
     VORN_CS_CMAPPED,
     false,
     {1, 0}},
    {"indices of colours with alpha, one out of reach",
     file(1, 1, 1, 32, 2, 1, 8, 0x20, {1, 2, 3, 4, 0, 9}),
     0,
     VORN_CS_RGB,
     true,
     {3, 2, 1, 4, 0, 0, 0, 0}},
    {"a run across lines, then pixels as they are",
     file(0, 11, 0, 0, 2, 3, 8, 0x20, {0x82, 7, 2, 1, 2, 3}),
     0,
     VORN_CS_GRAY,
     false,
     {7, 7, 7, 1, 2, 3}},
    {"a map that colours don't need",
     file(1, 2, 1, 24, 1, 1, 24, 0x20, {9, 9, 9, 1, 2, 3}),
     0,
     VORN_CS_RGB,
     false,
     {3, 2, 1}},
};

std::string fileOf(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(TgaLoader, ReadsEveryKind) {
    const ScratchDirectory files;
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<TgaLoader>(files.write("a", fileOf(c.file)));
        EXPECT_EQ(got.samples, c.samples);
        EXPECT_EQ(got.image.orientation, c.orientation);
        EXPECT_EQ(got.image.colorSpace, c.colorSpace);
        EXPECT_EQ(got.image.alpha, c.alpha);
        if (c.colorSpace == VORN_CS_CMAPPED) {
            EXPECT_EQ(paletteOf(got.image), (Bytes{3, 2, 1, 6, 5, 4}));
        }
        for (size_t size = 0; size < c.file.size(); ++size)
            EXPECT_NE(loadFailure<TgaLoader>(files.write("b", fileOf(c.file).substr(0, size))), 0);
    }
    EXPECT_EQ(loadFailure<TgaLoader>(files.write("a", "a text that is long enough for a head")),
              formats::kNotThisFormat);
    EXPECT_EQ(loadFailure<TgaLoader>(files.write("a", fileOf(file(0, 2, 0, 0, 0, 1, 24, 0, {})))),
              formats::kDamaged);
}

TEST(TgaSaver, WhatItWritesReadsBackTheSame) {
    const ScratchDirectory files;
    const ScopedVariable config("XDG_CONFIG_HOME", files.path("config").c_str());
    // Noise, runs, and runs that are longer than one packet.
    for (const char* setting : {"", "RunLength=false"}) {
        VORN_H_ModuleStoreParameters("tga", VORN_SAVER, setting);
        for (const VORN_Word channels : {1, 3, 4}) {
            auto samples = noiseOf(600 * 2 * channels);
            std::fill_n(samples.begin() + 5, 300 * channels, uint8_t{8});
            auto words = imageWords(600, 2, channels, channels == 1 ? VORN_CS_GRAY : VORN_CS_RGB);
            words.insert(words.end(), {ITAG_Description, word("a note")});
            save<TgaSaver>(files.path("a.tga"), words, samples);
            const LoadedImage back = load<TgaLoader>(files.path("a.tga"));
            EXPECT_EQ(back.samples, samples);
            EXPECT_EQ(textOf(back.image, ITAG_Description), "a note");
        }
    }
    Bytes entries{1, 2, 3, 40, 50, 60};
    const VORN_ChunkyBuffer line = formats::interleavedBuffer(entries.data(), 2, 1, 3, 1);
    VORN_Palette* palette = VORN_H_CreatePaletteData(&line, VORN_CS_RGB);
    auto words = imageWords(2, 1, 1, VORN_CS_CMAPPED);
    words.insert(words.end(), {ITAG_Palette, reinterpret_cast<VORN_Word>(palette)});
    save<TgaSaver>(files.path("a.tga"), words, {1, 0});
    VORN_H_FreePaletteData(palette);
    const LoadedImage back = load<TgaLoader>(files.path("a.tga"));
    EXPECT_EQ(back.samples, (Bytes{1, 0}));
    EXPECT_EQ(paletteOf(back.image), entries);
    EXPECT_EQ(failureOf([&] {
                  save<TgaSaver>(files.path("b"), imageWords(65536, 1, 1, VORN_CS_GRAY), {});
              }),
              formats::kCannotSave);
}

}  // namespace
