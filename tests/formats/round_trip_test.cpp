// Pictures, and what stands beside their pixels, saved by one module program and loaded by another.
#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "tests/formats/module_host.h"

namespace {

struct Kind {
    int32_t channels, colorSpace;
};
constexpr Kind kGrey{1, VORN_CS_GRAY}, kGreyAlpha{2, VORN_CS_GRAY}, kColor{3, VORN_CS_RGB},
    kColorAlpha{4, VORN_CS_RGB}, kInk{4, VORN_CS_CMYK}, kInkAlpha{5, VORN_CS_CMYK};

struct Trip {
    const char* saver;
    int bits;  // that the format keeps of samples of 16; 8: it has no such samples
    std::vector<Kind> kinds;
    std::vector<const char*> settings;  // each is tried
};
const std::vector<Kind> kAll = {kGrey, kGreyAlpha, kColor, kColorAlpha};
const std::vector<Kind> kInkToo = {kGrey, kGreyAlpha, kColor, kColorAlpha, kInk, kInkAlpha};
const std::vector<const char*> kTiffSettings = {"",
                                                "Compression=none",
                                                "Compression=deflate\nLevel=9",
                                                "Tiles=64",
                                                "Compression=none\nTiles=128",
                                                "Compression=packbits"};
const Trip kTrips[] = {{"pnm", 16, kAll, {"", "Form=plain"}},
                       {"bmp", 8, {kColor, kColorAlpha}, {""}},
                       {"tga", 8, {kGrey, kColor, kColorAlpha}, {"", "RunLength=false"}},
                       {"png", 16, kAll, {"", "Interlace=true"}},
                       {"tiff", 16, kInkToo, kTiffSettings},
                       {"webp", 8, {kColor, kColorAlpha}, {"Lossless=true"}},
                       {"jpeg2000", 16, kAll, {"", "TileSize=0", "TileSize=50"}},
                       {"jxl", 16, kAll, {"Lossless=true"}},
                       {"avif", 12, kAll, {"Lossless=true"}},
                       {"heif", 10, kAll, {"Lossless=true"}}};

// Noise of as many bits as the format keeps, with a run that is longer than one packet of TGA.
void fill(Pixels& pixels, int bits) {
    Bytes& samples = pixels.samples;
    pixels.fill(noiseOf(samples.size()));
    std::fill_n(samples.begin(), samples.size() / 8, uint8_t{7});
    const unsigned most = (1u << bits) - 1;
    for (size_t i = 0; bits > 8 && i < samples.size(); i += 2) {
        const unsigned sample = ((samples[i] | samples[i + 1] << 8u) & most) * 65535 + most / 2;
        samples[i] = static_cast<uint8_t>(sample / most);
        samples[i + 1] = static_cast<uint8_t>(sample / most >> 8);
    }
}

void expectSame(const Image& saver,
                const Image& loader,
                const std::string& path,
                const Kind& kind,
                const std::pair<int32_t, int32_t>& size,
                int bits) {
    const int32_t bytes = bits > 8 ? 2 : 1;
    Pixels saved(size.first, size.second, kind.channels, bytes);
    fill(saved, bits);
    ASSERT_TRUE(save(saver, path, saved, kind.colorSpace)) << saver.error();
    EXPECT_TRUE(saver.close());
    ASSERT_TRUE(loader.open(path));
    EXPECT_EQ(loader.number(ITAG_Channels), kind.channels);
    EXPECT_EQ(loader.number(ITAG_ColorSpace), kind.colorSpace);
    EXPECT_EQ(loader.number(ITAG_Alpha),
              kind.channels > VORN_L_ColorSpaceChannels(kind.colorSpace));
    const Pixels loaded(size.first, size.second, kind.channels, bytes);
    EXPECT_TRUE(loader.read(loaded));
    EXPECT_TRUE(loaded.samples == saved.samples);
    EXPECT_TRUE(loader.close());
}

TEST_F(Modules, BringBackWhatTheyHaveSaved) {
    for (const Trip& trip : kTrips) {
        if (!has(trip.saver)) continue;
        for (const char* settings : trip.settings) {
            user_.store(trip.saver, settings);
            const Image saver(trip.saver, VORN_SAVER);
            const Image loader(loaderOf(trip.saver), VORN_LOADER);
            for (const Kind& kind : trip.kinds) {
                for (const int bits : std::set{8, trip.bits}) {
                    SCOPED_TRACE(testing::Message() << trip.saver << settings << kind.channels
                                                    << kind.colorSpace << ' ' << bits);
                    // More than one block holds, and as little as can be.
                    for (const auto& size : {std::pair{403, 91}, {1, 1}})
                        expectSame(saver, loader, files_.path("a"), kind, size, bits);
                }
            }
        }
    }
}

TEST_F(Modules, BringBackIndicesAndTheirPalette) {
    const Bytes entries{1, 2, 3, 40, 50, 60, 7, 8, 9};
    const PaletteTag palette(entries);
    for (const char* format : {"bmp", "gif", "png", "tga", "tiff"}) {
        if (!has(format)) continue;
        SCOPED_TRACE(format);
        const Image saver(format, VORN_SAVER);
        const Image loader(format, VORN_LOADER);
        Pixels saved(3, 2, 1, 1);
        saved.samples[1] = saved.samples[4] = 1;
        saved.samples[2] = 2;
        ASSERT_TRUE(saver.open(files_.path("a")) && describe(saver, saved, VORN_CS_CMAPPED) &&
                    saver.set(ITAG_Palette, VORN_Word(palette)) && saver.write(saved));
        ASSERT_TRUE(loader.open(files_.path("a")));
        EXPECT_EQ(loader.number(ITAG_ColorSpace), VORN_CS_CMAPPED);
        const Pixels loaded(3, 2, 3, 1);
        ASSERT_TRUE(loader.set(ITAG_ColorSpace, VORN_CS_RGB) && loader.read(loaded));
        Bytes colors;
        for (const uint8_t index : saved.samples)
            colors.insert(colors.end(), &entries[3 * index], &entries[3 * index] + 3);
        EXPECT_EQ(loaded.samples, colors);
    }
}

using Texts = std::map<unsigned, std::string>;

const Texts kAllTexts = {{ITAG_Artist, "Andr\xC3\xA9"},
                         {ITAG_DateTime, "2024:05:06 07:08:09"},
                         {ITAG_HostComputer, "a computer"},
                         {ITAG_Description, "\xE7\x8C\xAB, a cat\nasleep"},
                         {ITAG_Make, "maker"},
                         {ITAG_Model, "camera"},
                         {ITAG_Software, "VORN"},
                         {ITAG_DocumentName, "title"},
                         {ITAG_PageName, "one"}};

enum Room { kNone = 0, kDpi = 1, kAspect = 2 };

// What stands beside the pixels: docs/formats.md says what each format keeps. The texts are named
// by their first bytes; "*" are all.
const std::tuple<const char*, int, std::string> kNotes[] = {{"avif", kDpi, "*"},
                                                            {"bmp", kDpi, ""},
                                                            {"gif", kAspect, "\xE7"},
                                                            {"heif", kDpi, "*"},
                                                            {"jpeg", kDpi | kAspect, "*"},
                                                            {"jpeg2000", kDpi, "*"},
                                                            {"jxl", kDpi, "*"},
                                                            {"png", kDpi | kAspect, "*"},
                                                            {"pnm", kNone, ""},
                                                            {"tga", kAspect, "A2\xE7Vt"},
                                                            {"tiff", kDpi | kAspect, "*"},
                                                            {"webp", kDpi, "*"}};

std::string textOf(const Image& image, unsigned id) {
    char* text = nullptr;
    if (!VORN_H_ImageVaGetTags(image.get(), id, &text, TAG_End) || !text) return "";
    const std::string copy = text;
    VORN_L_TagFreeString(text);
    return copy;
}

TEST_F(Modules, KeepWhatTheirFormatHasRoomFor) {
    for (const auto& [format, room, texts] : kNotes) {
        if (!has(format)) continue;
        SCOPED_TRACE(format);
        const std::string path = files_.path("a");
        const Image saver(format, VORN_SAVER);
        const Image loader(loaderOf(format), VORN_LOADER);
        const Pixels pixels(16, 8, 3, 1);
        for (const bool dpi : {true, false}) {
            ASSERT_TRUE(saver.open(path) && describe(saver, pixels, VORN_CS_RGB));
            for (const auto& [id, text] : kAllTexts) saver.set(id, text.c_str());
            if (dpi)
                saver.set(ITAG_XDPI, 300, ITAG_YDPI, 150);
            else
                saver.set(ITAG_XAspect, 3, ITAG_YAspect, 2);
            ASSERT_TRUE(saver.write(pixels));
            saver.close();
            ASSERT_TRUE(loader.open(path));
            EXPECT_EQ(loader.number(ITAG_XDPI), dpi && room & kDpi ? 300 : 0);
            EXPECT_EQ(loader.number(ITAG_YDPI), dpi && room & kDpi ? 150 : 0);
            EXPECT_EQ(loader.number(ITAG_XAspect), !dpi && room & kAspect ? 3 : 0);
            EXPECT_EQ(loader.number(ITAG_YAspect), !dpi && room & kAspect ? 2 : 0);
            for (const auto& [id, text] : kAllTexts) {
                const bool kept = texts == "*" || texts.find(text[0]) != std::string::npos;
                EXPECT_EQ(textOf(loader, id), kept ? text : "");
            }
            loader.close();
        }
    }
}

}  // namespace
