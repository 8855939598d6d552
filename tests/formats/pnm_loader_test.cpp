#include "formats/pnm/pnm_loader.h"

#include "tests/formats/format_files.h"

namespace {

using pnm::PnmLoader;
using namespace std::string_literals;

TEST(PnmLoader, ReadsEveryKind) {
    const struct {
        const char* what;
        std::string file, summary, samples;
    } cases[] = {
        {"plain bitmap, digits together or apart", "P1\n# a comment\n3 2\n10 1\n0\n11\n",
         "3x2 Gray 1 of 1 bits", "\0\xFF\0\xFF\0\0"s},
        {"raw bitmap, lines begin with a byte", "P4 10 2\n\x80\x40\0\xFF"s, "10x2 Gray 1 of 1 bits",
         "\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0\0"s},
        {"plain grey, rounded", "P2 4 1 15 0 7 8\t15", "4x1 Gray 1 of 4 bits", "\0\x77\x88\xFF"s},
        {"plain colour beyond 8 bits, rounded", "P3\n1 1\n1000\n0 500 1000\n",
         "1x1 RGB 3 of 10/16 bits", "\0\0\0\x80\xFF\xFF"s},
        {"raw grey", "P5\n2 2 255\n\0\x01\xFE\xFF"s, "2x2 Gray 1 of 8 bits", "\0\x01\xFE\xFF"s},
        {"raw grey to 100", "P5 3 1 100\n\0\x32\x64"s, "3x1 Gray 1 of 7 bits", "\0\x80\xFF"s},
        {"raw grey of 16 bits", "P5 2 1 65535\n\x12\x34\xAB\xCD", "2x1 Gray 1 of 16/16 bits",
         "\x34\x12\xCD\xAB"},
        {"raw colour, comments anywhere, a second image behind",
         "P6#one\n#two\n1#three\n1 255#four\nRGBP6 1 1 255\nrgb", "1x1 RGB 3 of 8 bits", "RGB"},
        {"pixels that look like white space", "P6\n1 1\n255\n\n #", "1x1 RGB 3 of 8 bits", "\n #"},
        {"PAM with alpha",
         "P7\n# c\nWIDTH 1\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nrgbaRGBA",
         "1x2 RGB 4 of 8 bits alpha", "rgbaRGBA"},
        {"grey PAM with alpha, 16 bits",
         "P7\nHEIGHT 1\nWIDTH 1\nDEPTH 2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nAaBb",
         "1x1 Gray 2 of 16/16 bits alpha", "aAbB"},
        {"black and white PAM, 1 is white",
         "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n\1\0"s,
         "2x1 Gray 1 of 1 bits", "\xFF\0"s},
        {"PAM with more channels than any colour space",
         "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 8\nMAXVAL 255\nENDHDR\n12345678", "1x1 None 8 of 8 bits",
         "12345678"},
    };
    const ScratchDirectory files;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<PnmLoader>(files.write("a", c.file));
        EXPECT_EQ(summaryOf(got.image), c.summary);
        EXPECT_EQ(got.text(), c.samples);
    }
}

TEST(PnmLoader, RefusesWhatIsNotRight) {
    const std::pair<int32_t, std::vector<std::string>> cases[] = {
        {formats::kNotThisFormat,
         {"", "P", "P6", "P8 1 1 1 0", "P0 1 1 1 0", "P65 1 255 ", "Plain text"}},
        {formats::kDamaged,
         {"P6\n",
          "P6\n1",
          "P6\n1 1 255",
          "P6\n-1 1 255\nrgb",
          "P6\n1x1 255\nrgb",
          "P6\n0 1 255\n",
          "P6\n1 1 0\nrgb",
          "P6\n1 1 65536\nrgbrgb",
          "P6\n99999999999999999999 1 255\n",
          "P6\n2 2 255\nrgbrgbrgbrg",
          "P4\n9 2\n\x01\x02\x03",
          "P5\n1 1 100\n\x65",
          "P2\n1 1 255\n256",
          "P2\n2 1 255\n12",
          "P2\n1 1 255\n12x",
          "P1\n2 1\n12",
          "P7\nCOLOURS 1\nENDHDR\nx",
          "P7\n#" + std::string(5000, 'x'),
          "P7\nWIDTH 1\nHEIGHT 1\nMAXVAL 255\nENDHDR\nx",
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nx",
          "P7\nWIDTH\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nx"}},
        {formats::kUnsupported,
         {"P6\n65537 1 255\n", "P6\n1 65537 255\n",
          "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 9\nMAXVAL 255\nENDHDR\n123456789"}}};
    const ScratchDirectory files;
    for (const auto& [code, contents] : cases) {
        for (const std::string& content : contents)
            EXPECT_EQ(loadFailure<PnmLoader>(files.write("a", content)), code) << content;
    }
    EXPECT_EQ(loadFailure<PnmLoader>(files.path("missing.ppm")), formats::kCannotOpen);
    EXPECT_EQ(loadFailure<PnmLoader>(files.path()), formats::kCannotOpen);
}

}  // namespace
