#include "formats/pnm/pnm_loader.h"

#include "tests/formats/format_files.h"

namespace {

using pnm::PnmLoader;
using Bytes = std::vector<uint8_t>;

struct Readable {
    const char* what;
    std::string file;
    int32_t width, height, channels, bytes, bits;
    int32_t colorSpace;
    bool alpha;
    Bytes samples;
};

const Readable kReadable[] = {
    {"plain bitmap, digits together or apart",
     "P1\n# a comment\n3 2\n10 1\n0\n11\n",
     3,
     2,
     1,
     1,
     1,
     VORN_CS_GRAY,
     false,
     {0, 255, 0, 255, 0, 0}},
    {"raw bitmap, lines begin with a byte",
     std::string("P4 10 2\n\x80\x40\x00\xFF", 12),
     10,
     2,
     1,
     1,
     1,
     VORN_CS_GRAY,
     false,
     {0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 255, 255, 255, 255, 255, 255, 255, 255, 0, 0}},
    {"plain grey, rounded",
     "P2 4 1 15 0 7 8\t15",
     4,
     1,
     1,
     1,
     4,
     VORN_CS_GRAY,
     false,
     {0, 119, 136, 255}},
    {"plain colour beyond 8 bits, rounded",
     "P3\n1 1\n1000\n0 500 1000\n",
     1,
     1,
     3,
     2,
     10,
     VORN_CS_RGB,
     false,
     {0, 0, 0x00, 0x80, 0xFF, 0xFF}},
    {"raw grey",
     std::string("P5\n2 2 255\n\0\x01\xFE\xFF", 15),
     2,
     2,
     1,
     1,
     8,
     VORN_CS_GRAY,
     false,
     {0, 1, 254, 255}},
    {"raw grey to 100",
     std::string("P5 3 1 100\n\0\x32\x64", 14),
     3,
     1,
     1,
     1,
     7,
     VORN_CS_GRAY,
     false,
     {0, 128, 255}},
    {"raw grey of 16 bits",
     std::string("P5 2 1 65535\n\x12\x34\xAB\xCD", 17),
     2,
     1,
     1,
     2,
     16,
     VORN_CS_GRAY,
     false,
     {0x34, 0x12, 0xCD, 0xAB}},
    {"raw colour, comments anywhere, a second image behind",
     "P6#one\n#two\n1#three\n1 255#four\nRGBP6 1 1 255\nrgb",
     1,
     1,
     3,
     1,
     8,
     VORN_CS_RGB,
     false,
     {'R', 'G', 'B'}},
    {"pixels that look like white space",
     "P6\n1 1\n255\n\n #",
     1,
     1,
     3,
     1,
     8,
     VORN_CS_RGB,
     false,
     {'\n', ' ', '#'}},
    {"PAM with alpha",
     "P7\n# c\nWIDTH 1\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nrgbaRGBA",
     1,
     2,
     4,
     1,
     8,
     VORN_CS_RGB,
     true,
     {'r', 'g', 'b', 'a', 'R', 'G', 'B', 'A'}},
    {"grey PAM with alpha, 16 bits",
     "P7\nHEIGHT 1\nWIDTH 1\nDEPTH 2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nAaBb",
     1,
     1,
     2,
     2,
     16,
     VORN_CS_GRAY,
     true,
     {'a', 'A', 'b', 'B'}},
    {"black and white PAM, 1 is white",
     std::string("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n\1\0",
                 69),
     2,
     1,
     1,
     1,
     1,
     VORN_CS_GRAY,
     false,
     {255, 0}},
    {"PAM with more channels than any colour space",
     "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 8\nMAXVAL 255\nENDHDR\n12345678",
     1,
     1,
     8,
     1,
     8,
     VORN_CS_NONE,
     false,
     {'1', '2', '3', '4', '5', '6', '7', '8'}},
};

TEST(PnmLoader, ReadsEveryKind) {
    const ScratchDirectory files;
    for (const Readable& r : kReadable) {
        SCOPED_TRACE(r.what);
        const LoadedImage got = load<PnmLoader>(files.write("a", r.file));
        EXPECT_EQ(got.image.width, r.width);
        EXPECT_EQ(got.image.height, r.height);
        EXPECT_EQ(got.image.channels, r.channels);
        EXPECT_EQ(got.image.bytesPerChannel, r.bytes);
        EXPECT_EQ(got.image.significantBits, r.bits);
        EXPECT_EQ(got.image.colorSpace, r.colorSpace);
        EXPECT_EQ(got.image.alpha, r.alpha);
        EXPECT_EQ(got.samples, r.samples);
    }
}

TEST(PnmLoader, RefusesWhatIsNotRight) {
    const std::pair<std::string, int32_t> cases[] = {
        {"", formats::kNotThisFormat},
        {"P", formats::kNotThisFormat},
        {"P6", formats::kNotThisFormat},
        {"P8 1 1 1 0", formats::kNotThisFormat},
        {"P0 1 1 1 0", formats::kNotThisFormat},
        {"P65 1 255 ", formats::kNotThisFormat},
        {"Plain text", formats::kNotThisFormat},
        {"P6\n", formats::kDamaged},
        {"P6\n1", formats::kDamaged},
        {"P6\n1 1 255", formats::kDamaged},
        {"P6\n-1 1 255\nrgb", formats::kDamaged},
        {"P6\n1x1 255\nrgb", formats::kDamaged},
        {"P6\n0 1 255\n", formats::kDamaged},
        {"P6\n1 1 0\nrgb", formats::kDamaged},
        {"P6\n1 1 65536\nrgbrgb", formats::kDamaged},
        {"P6\n99999999999999999999 1 255\n", formats::kDamaged},
        {"P6\n65537 1 255\n", formats::kUnsupported},
        {"P6\n1 65537 255\n", formats::kUnsupported},
        {"P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\nx", formats::kDamaged},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nx", formats::kDamaged},
        {"P7\nWIDTH\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nx", formats::kDamaged},
        {"P7\nCOLOURS 1\nENDHDR\nx", formats::kDamaged},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 9\nMAXVAL 255\nENDHDR\n123456789", formats::kUnsupported},
        {"P7\n#" + std::string(5000, 'x'), formats::kDamaged},
        {"P6\n2 2 255\nrgbrgbrgbrg", formats::kDamaged},
        {"P4\n9 2\n\x01\x02\x03", formats::kDamaged},
        {"P5\n1 1 100\n\x65", formats::kDamaged},
        {"P2\n1 1 255\n256", formats::kDamaged},
        {"P2\n2 1 255\n12", formats::kDamaged},
        {"P2\n1 1 255\n12x", formats::kDamaged},
        {"P1\n2 1\n12", formats::kDamaged},
    };
    const ScratchDirectory files;
    for (const auto& [file, code] : cases)
        EXPECT_EQ(loadFailure<PnmLoader>(files.write("a", file)), code) << file;
}

TEST(PnmLoader, NamesTheReasonWhenAFileCannotBeOpened) {
    const ScratchDirectory files;
    EXPECT_EQ(loadFailure<PnmLoader>(files.path("missing.ppm")), formats::kCannotOpen);
    EXPECT_EQ(loadFailure<PnmLoader>(files.path()), formats::kCannotOpen);
}

}  // namespace
