#include "formats/tga/tga_loader.h"
#include "tests/formats/format_files.h"

namespace {

using tga::TgaLoader;
using namespace std::string_literals;

// `map`: its mark, its entries and their bits.
std::string file(uint8_t kind,
                 uint8_t w,
                 uint8_t h,
                 uint8_t bits,
                 uint8_t descriptor,
                 const Bytes& map = {0, 0, 0}) {
    const Bytes bytes{0, map[0], kind, 0, 0, map[1], 0, map[2], 0,
                      0, 0,      0,    w, 0, h,      0, bits,   descriptor};
    return {bytes.begin(), bytes.end()};
}

TEST(TgaLoader, ReadsEveryKind) {
    const struct {
        const char* what;
        std::string file;
        int32_t orientation;
        std::string summary, samples;
    } cases[] = {
        {"grey", file(3, 2, 1, 8, 0x20) + "\5\x09", 0, "2x1 Gray 1 of 0 bits", "\5\x09"},
        {"grey with alpha", file(3, 1, 1, 16, 0x28) + "\5\x09", 0, "1x1 Gray 2 of 0 bits alpha",
         "\5\x09"},
        {"15 bits", file(2, 1, 1, 15, 0) + "\x1F\x40", 0, "1x1 RGB 3 of 5 bits", "\x84\0\xFF"s},
        {"16 bits, one of them alpha", file(2, 2, 1, 16, 0x31) + "\0\x80\0\0"s, 4,
         "2x1 RGB 4 of 5 bits alpha", "\0\0\0\xFF\0\0\0\0"s},
        {"24 bits, from the bottom right", file(2, 1, 2, 24, 0x10) + "\1\2\3\4\5\6", 4,
         "1x2 RGB 3 of 0 bits", "\6\5\4\3\2\1"},
        {"indices from the bottom left", file(1, 1, 2, 8, 0, {1, 2, 24}) + "\1\2\3\4\5\6\1\0"s, 0,
         "1x2 CMAPPED 1 of 0 bits", "\0\1"s},
        {"a run from the bottom left", file(11, 2, 1, 8, 0) + "\x81\7", 6, "2x1 Gray 1 of 0 bits",
         "\7\7"},
        {"32 bits without alpha", file(2, 1, 1, 32, 0x20) + "\1\2\3\4", 0, "1x1 RGB 3 of 0 bits",
         "\3\2\1"},
        {"32 bits with alpha", file(2, 1, 1, 32, 0x28) + "\1\2\3\4", 0, "1x1 RGB 4 of 0 bits alpha",
         "\3\2\1\4"},
        {"indices", file(1, 2, 1, 8, 0x20, {1, 2, 24}) + "\1\2\3\4\5\6\1\0"s, 0,
         "2x1 CMAPPED 1 of 0 bits", "\1\0"s},
        {"indices of colours with alpha, one out of reach",
         file(1, 2, 1, 8, 0x20, {1, 1, 32}) + "\1\2\3\4\0\x09"s, 0, "2x1 RGB 4 of 0 bits alpha",
         "\3\2\1\4\0\0\0\0"s},
        {"a run across lines, then pixels as they are", file(11, 2, 3, 8, 0x20) + "\x82\7\2\1\2\3",
         0, "2x3 Gray 1 of 0 bits", "\7\7\7\1\2\3"},
        {"a map that colours don't need", file(2, 1, 1, 24, 0x20, {1, 1, 24}) + "\7\7\7\1\2\3", 0,
         "1x1 RGB 3 of 0 bits", "\3\2\1"},
    };
    const ScratchDirectory files;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<TgaLoader>(files.write("a", c.file));
        EXPECT_EQ(got.text(), c.samples);
        EXPECT_EQ(got.image.orientation, c.orientation);
        EXPECT_EQ(summaryOf(got.image), c.summary);
        if (got.image.colorSpace == VORN_CS_CMAPPED) {
            EXPECT_EQ(paletteOf(got.image), (Bytes{3, 2, 1, 6, 5, 4}));
        }
        for (size_t size = 0; size < c.file.size(); ++size)
            EXPECT_NE(loadFailure<TgaLoader>(files.write("b", c.file.substr(0, size))), 0);
    }
    EXPECT_EQ(loadFailure<TgaLoader>(files.write("a", file(2, 0, 1, 24, 0))), formats::kDamaged);
}

}  // namespace
