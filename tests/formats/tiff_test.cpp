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
    int alphaKind = -1;

    // Sample c of pixel (x, y).
    unsigned sample(uint32_t x, uint32_t y, int c) const {
        return noiseAt(x, y, c) & ((1u << bits) - 1);
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
            TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
        }
        const auto kind = static_cast<uint16_t>(alphaKind);
        if (alphaKind >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
        for (int plane = 0; plane < (planes ? samples : 1); ++plane) writePlane(tiff, plane);
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

    void writePlane(TIFF* tiff, int plane) const {
        const auto number = static_cast<uint16_t>(plane);
        const uint32_t rows = tile ? tile : 8;
        for (uint32_t y0 = 0; y0 < height; y0 += rows) {
            for (uint32_t x0 = 0; x0 < width; x0 += tile ? tile : width) {
                Bytes bytes;
                for (uint32_t y = y0; y < (tile ? y0 + rows : std::min(y0 + rows, height)); ++y) {
                    const Bytes line = lineOf(x0, tile ? tile : width, y, plane);
                    bytes.insert(bytes.end(), line.begin(), line.end());
                }
                if (tile)
                    TIFFWriteTile(tiff, bytes.data(), x0, y0, 0, number);
                else
                    TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y0, number), bytes.data(),
                                          static_cast<tmsize_t>(bytes.size()));
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
                        ASSERT_EQ(got.next(at), (value * full + most / 2) / most) << i;
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

TEST_F(Tiff, ArrangesItsLinesAsIsSet) {
    for (const auto& [settings, wanted] : {std::pair{"Tiles=64", 64u}, {"", 0u}}) {
        settings_.store("tiff", settings);
        save<TiffSaver>(files_.path("a.tif"), imageWords(100, 80, 1, VORN_CS_GRAY), noiseOf(8000));
        TIFF* tiff = TIFFOpen(files_.path("a.tif").c_str(), "r");
        uint32_t tile = 0;
        TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tile);
        TIFFClose(tiff);
        EXPECT_EQ(tile, wanted);
    }
}

TEST_F(Tiff, CompressesAsJpegWhereThatIsSet) {
    for (const char* setting : {"Quality=90\nTiles=64", "Quality=40"}) {
        settings_.store("tiff", (std::string("Compression=jpeg\n") + setting).c_str());
        for (const VORN_Word channels : {1, 3}) {
            Bytes ramp;
            for (size_t i = 0; i < 100 * 90 * channels; ++i)
                ramp.push_back(static_cast<uint8_t>(255 - i / channels % 100));
            save<TiffSaver>(
                files_.path("a.tif"),
                imageWords(100, 90, channels, channels == 1 ? VORN_CS_GRAY : VORN_CS_RGB), ramp);
            EXPECT_LE(furthest(load<TiffLoader>(files_.path("a.tif")).samples, ramp), 4);
        }
    }
    EXPECT_EQ(saveFailure<TiffSaver>(files_.path("b"), imageWords(1, 1, 4, VORN_CS_RGB)),
              formats::kCannotSave);
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

}  // namespace
