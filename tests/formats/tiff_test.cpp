#include "formats/tiff/tiff_loader.h"
#include "formats/tiff/tiff_saver.h"
#include "tests/formats/format_files.h"

namespace {

using tiff_format::TiffLoader;
using tiff_format::TiffSaver;

// A file made with libtiff itself.
struct TiffToMake {
    uint32_t width = 37;
    uint32_t height = 21;
    int bits = 8;
    int samples = 3;
    int photometric = PHOTOMETRIC_RGB;
    bool planes = false;
    uint32_t tile = 0;
    uint32_t stripRows = 8;
    int alphaKind = -1;

    // Sample c of pixel (x, y).
    unsigned sample(uint32_t x, uint32_t y, int c) const {
        const unsigned noise = (x * 2654435761u + y * 40503u + static_cast<unsigned>(c) * 97u + 1);
        return (noise * 2246822519u >> 7) & ((1u << bits) - 1);
    }

    // `mode`: "w" for a new file, "a" for a page behind the others.
    void write(const std::string& path, const char* mode = "w") const {
        TIFF* tiff = TIFFOpen(path.c_str(), mode);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG,
                     planes ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        if (tile) {
            TIFFSetField(tiff, TIFFTAG_TILEWIDTH, tile);
            TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
        } else {
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, stripRows);
        }
        const auto kind = static_cast<uint16_t>(alphaKind);
        if (alphaKind >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
        for (int plane = 0; plane < (planes ? samples : 1); ++plane) {
            if (tile)
                writeTiles(tiff, plane);
            else
                for (uint32_t y = 0; y < height; ++y)
                    TIFFWriteScanline(tiff, lineOf(0, width, y, plane).data(), y,
                                      static_cast<uint16_t>(plane));
        }
        TIFFClose(tiff);
    }

  private:
    Bytes lineOf(uint32_t x0, uint32_t pixels, uint32_t y, int plane) const {
        Bytes line;
        unsigned pending = 0;
        int count = 0;
        for (uint32_t x = x0; x < x0 + pixels; ++x) {
            for (int c = plane; c < (planes ? plane + 1 : samples); ++c) {
                const unsigned value = sample(x, y, c);
                if (bits == 16) {  // in the machine's order
                    line.push_back(static_cast<uint8_t>(value));
                    line.push_back(static_cast<uint8_t>(value >> 8));
                    continue;
                }
                pending = pending << bits | value;
                for (count += bits; count >= 8; count -= 8)
                    line.push_back(static_cast<uint8_t>(pending >> (count - 8)));
            }
        }
        if (count > 0) line.push_back(static_cast<uint8_t>(pending << (8 - count)));
        return line;
    }

    void writeTiles(TIFF* tiff, int plane) const {
        for (uint32_t y0 = 0; y0 < height; y0 += tile) {
            for (uint32_t x0 = 0; x0 < width; x0 += tile) {
                Bytes bytes;
                for (uint32_t y = y0; y < y0 + tile; ++y) {
                    const auto line = lineOf(x0, tile, y, plane);
                    bytes.insert(bytes.end(), line.begin(), line.end());
                }
                TIFFWriteTile(tiff, bytes.data(), x0, y0, 0, static_cast<uint16_t>(plane));
            }
        }
    }
};

using Tiff = FormatTest;

TEST_F(Tiff, ReadsEveryDepthAndArrangement) {
    struct Kind {
        int photometric, samples, colorSpace;
    };
    const Kind kinds[] = {{PHOTOMETRIC_MINISBLACK, 1, VORN_CS_GRAY},
                          {PHOTOMETRIC_MINISWHITE, 1, VORN_CS_GRAY},
                          {PHOTOMETRIC_RGB, 3, VORN_CS_RGB},
                          {PHOTOMETRIC_SEPARATED, 4, VORN_CS_CMYK}};
    for (const Kind& kind : kinds) {
        for (const int bits : {1, 2, 4, 8, 12, 16}) {
            for (const int form : {0, 1, 2, 3}) {
                SCOPED_TRACE(testing::Message() << kind.photometric << ' ' << bits << ' ' << form);
                TiffToMake file{.bits = bits,
                                .samples = kind.samples,
                                .photometric = kind.photometric,
                                .planes = form % 2 == 1,
                                .tile = form < 2 ? 0u : 16u};
                file.write(files_.path("a.tif"));
                const LoadedImage got = load<TiffLoader>(files_.path("a.tif"));
                ASSERT_EQ(got.image.channels, kind.samples);
                EXPECT_EQ(got.image.colorSpace, kind.colorSpace);
                EXPECT_EQ(got.image.significantBits, bits);
                const unsigned most = (1u << bits) - 1;
                const unsigned full = bits > 8 ? 65535 : 255;
                size_t at = 0;
                for (uint32_t i = 0; i < file.width * file.height * 1u; ++i) {
                    for (int c = 0; c < kind.samples; ++c) {
                        unsigned value = file.sample(i % file.width, i / file.width, c);
                        if (kind.photometric == PHOTOMETRIC_MINISWHITE) value = most - value;
                        unsigned sample = got.samples[at++];
                        if (bits > 8) sample |= static_cast<unsigned>(got.samples[at++]) << 8;
                        ASSERT_EQ(sample, (value * full + most / 2) / most) << i;
                    }
                }
            }
        }
    }
}

TEST_F(Tiff, DividesColoursByTheAlphaTheyWereMultipliedWith) {
    for (const int kind :
         {EXTRASAMPLE_ASSOCALPHA, EXTRASAMPLE_UNASSALPHA, EXTRASAMPLE_UNSPECIFIED}) {
        TiffToMake file{.samples = 4, .alphaKind = kind};
        file.write(files_.path("a.tif"));
        const LoadedImage got = load<TiffLoader>(files_.path("a.tif"));
        const bool alpha = kind != EXTRASAMPLE_UNSPECIFIED;
        ASSERT_EQ(got.image.channels, alpha ? 4 : 3);
        EXPECT_EQ(got.image.alpha, alpha);
        for (uint32_t x = 0; x < file.width; ++x) {
            const uint8_t* pixel = &got.samples[static_cast<size_t>(got.image.channels) * x];
            const unsigned red = file.sample(x, 0, 0);
            const unsigned opacity = file.sample(x, 0, 3);
            const bool divided = kind == EXTRASAMPLE_ASSOCALPHA && opacity > 0;
            const unsigned wanted =
                divided ? std::min(255u, (red * 255 + opacity / 2) / opacity) : red;
            EXPECT_EQ(pixel[0], wanted);
            if (alpha) {
                EXPECT_EQ(pixel[3], opacity);
            }
        }
    }
}

TEST_F(Tiff, WhatItWritesReadsBackTheSame) {
    const std::pair<VORN_Word, VORN_Word> kinds[] = {{1, VORN_CS_GRAY}, {2, VORN_CS_GRAY},
                                                     {3, VORN_CS_RGB},  {4, VORN_CS_RGB},
                                                     {4, VORN_CS_CMYK}, {5, VORN_CS_CMYK}};
    for (const char* setting :
         {"", "Compression=none", "Compression=lzw", "Compression=deflate\nLevel=9",
          "Compression=packbits", "Tiles=64", "Compression=none\nTiles=128"}) {
        settings_.store("tiff", setting);
        for (const auto& [channels, colorSpace] : kinds) {
            for (const VORN_Word bytes : {1, 2}) {
                SCOPED_TRACE(testing::Message() << setting << channels << ' ' << bytes);
                throughFile<TiffSaver, TiffLoader>(
                    files_.path("a.tif"), imageWords(130, 65, channels, colorSpace, bytes));
            }
        }
    }
    for (const char* bad : {"Compression=zip", "Tiles=100", "Compression=deflate\nLevel=0"}) {
        settings_.store("tiff", bad);
        EXPECT_EQ(saveFailure<TiffSaver>(files_.path("b"), imageWords(1, 1, 1, VORN_CS_GRAY), {0}),
                  formats::kBadOption);
    }
}

TEST_F(Tiff, ArrangesAndPacksAsIsSet) {
    auto samples = noiseOf(100 * 80);
    for (uint8_t& sample : samples) sample &= 3;
    const auto saved = [&](const char* settings) {
        settings_.store("tiff", settings);
        save<TiffSaver>(files_.path("a.tif"), imageWords(100, 80, 1, VORN_CS_GRAY), samples);
        TIFF* tiff = TIFFOpen(files_.path("a.tif").c_str(), "r");
        uint32_t tile = 0;
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tile);
        TIFFClose(tiff);
        return std::pair(tile, contentOf(files_.path("a.tif")).size());
    };
    EXPECT_EQ(saved("Tiles=64").first, 64u);
    EXPECT_EQ(saved("").first, 0u);
    EXPECT_NE(saved("Compression=deflate\nLevel=1").second,
              saved("Compression=deflate\nLevel=9").second);
}

TEST_F(Tiff, CompressesAsJpegWhereThatIsSet) {
    size_t before = SIZE_MAX;
    for (const char* setting : {"Quality=100", "Quality=90\nTiles=64", "Quality=40"}) {
        VORN_H_ModuleStoreParameters("tiff", VORN_SAVER,
                                     (std::string("Compression=jpeg\n") + setting).c_str());
        for (const VORN_Word channels : {1, 3}) {
            std::vector<uint8_t> ramp;
            for (size_t i = 0; i < 100 * 90 * channels; ++i)
                ramp.push_back(static_cast<uint8_t>(255 - i / channels % 100));
            save<TiffSaver>(
                files_.path("a.tif"),
                imageWords(100, 90, channels, channels == 1 ? VORN_CS_GRAY : VORN_CS_RGB), ramp);
            const LoadedImage back = load<TiffLoader>(files_.path("a.tif"));
            ASSERT_EQ(back.samples.size(), ramp.size());
            for (size_t i = 0; i < ramp.size(); ++i) ASSERT_NEAR(back.samples[i], ramp[i], 4) << i;
        }
        EXPECT_LT(contentOf(files_.path("a.tif")).size(), before);
        before = contentOf(files_.path("a.tif")).size();
        for (const auto& words :
             {imageWords(1, 1, 1, VORN_CS_GRAY, 2), imageWords(1, 1, 4, VORN_CS_RGB),
              imageWords(1, 1, 4, VORN_CS_CMYK)})
            EXPECT_EQ(failureOf([&] { save<TiffSaver>(files_.path("b"), words, {}); }),
                      formats::kCannotSave);
    }
}

TEST_F(Tiff, KeepsPaletteTextsResolutionAndOrientation) {
    const Bytes entries{1, 2, 3, 40, 50, 60};
    const PaletteTag palette(entries);
    const LoadedImage back = throughFile<TiffSaver, TiffLoader>(
        files_.path("a.tif"),
        imageWords(2, 1, 1, VORN_CS_CMAPPED, 1,
                   {ITAG_Palette, palette, ITAG_Artist, word("Andr\xC3\xA9"), ITAG_PageName,
                    word("one"), ITAG_XDPI, 300, ITAG_YDPI, 72, ITAG_Orientation, 5}),
        {1, 0});
    auto colors = paletteOf(back.image);
    ASSERT_EQ(colors.size(), 768u);
    colors.resize(6);
    EXPECT_EQ(colors, entries);
    EXPECT_EQ(textOf(back.image, ITAG_Artist), "Andr\xC3\xA9");
    EXPECT_EQ(textOf(back.image, ITAG_PageName), "one");
    EXPECT_EQ(tagsOf(back.image)[ITAG_XDPI], 300u);
    EXPECT_EQ(tagsOf(back.image)[ITAG_YDPI], 72u);
    EXPECT_EQ(back.image.orientation, 5);
}

TEST_F(Tiff, OpensTheWantedPage) {
    const std::string path = files_.path("a.tif");
    TiffToMake{.width = 10}.write(path);
    TiffToMake{.width = 20}.write(path, "a");
    EXPECT_EQ(load<TiffLoader>(path).image.width, 10);
    const LoadedImage second = load<TiffLoader>(path, {.page = 2});
    EXPECT_EQ(second.image.width, 20);
    EXPECT_EQ(tagsOf(second.image)[ITAG_PageCount], 2u);
    for (const int32_t page : {0, 3, -1})
        EXPECT_EQ(failureOf([&] { load<TiffLoader>(path, {.page = page}); }), formats::kNoSuchPage);
}

TEST_F(Tiff, RefusesWhatIsNoTiffAndWhatItCannotHold) {
    for (const char* other : {"", "II*", "just a text"})
        EXPECT_EQ(loadFailure<TiffLoader>(files_.write("a", other)), formats::kNotThisFormat);
    EXPECT_EQ(saveFailure<TiffSaver>(files_.path("b"), imageWords(1, 1, 1, VORN_CS_CMAPPED)),
              formats::kCannotSave);
}

}  // namespace
