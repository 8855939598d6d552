#include "formats/pnm/pnm_loader.h"
#include "formats/pnm/pnm_saver.h"
#include "tests/formats/format_files.h"

namespace {

using pnm::PnmLoader;
using pnm::PnmSaver;
using namespace std::string_literals;

using Pnm = FormatTest;

TEST_F(Pnm, ReadsEveryKind) {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const LoadedImage got = load<PnmLoader>(files_.write("a", c.file));
        EXPECT_EQ(summaryOf(got.image), c.summary);
        EXPECT_EQ(got.text(), c.samples);
    }
}

TEST_F(Pnm, RefusesWhatIsNotRight) {
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
    for (const auto& [code, contents] : cases) {
        for (const std::string& content : contents)
            EXPECT_EQ(loadFailure<PnmLoader>(files_.write("a", content)), code) << content;
    }
    EXPECT_EQ(loadFailure<PnmLoader>(files_.path("missing.ppm")), formats::kCannotOpen);
    EXPECT_EQ(loadFailure<PnmLoader>(files_.path()), formats::kCannotOpen);
}

TEST_F(Pnm, IsOfTheKindThatImageAndEndingAndSettingChoose) {
    const std::string pam = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH ";
    const char* const plain = "form=Plain";
    const std::string black(40, '\0');
    std::string zeros = "1";
    for (int i = 1; i < 40; ++i) zeros += i == 35 ? "\n1" : " 1";  // 35 digits, 34 blanks
    const struct {
        const char* form;
        const char* name;
        std::vector<VORN_Word> image;
        std::string samples, file;
    } cases[] = {
        {"", "a.pnm", imageWords(2, 1, 3, VORN_CS_RGB), "rgbRGB", "P6\n2 1\n255\nrgbRGB"},
        {"", "a.PPM", imageWords(1, 1, 3, VORN_CS_NONE), "rgb", "P6\n1 1\n255\nrgb"},
        {"", "a.ppm", imageWords(2, 1, 1, VORN_CS_GRAY), "gh", "P6\n2 1\n255\nggghhh"},
        {"", "b.ppm", imageWords(1, 1, 1, VORN_CS_GRAY, 2), "lh", "P6\n1 1\n65535\nhlhlhl"},
        {"", "a.pgm", imageWords(1, 2, 1, VORN_CS_GRAY), "gh", "P5\n1 2\n255\ngh"},
        {"", "a", imageWords(1, 1, 3, VORN_CS_RGB, 2), "123456", "P6\n1 1\n65535\n214365"},
        {"", "a.pbm", imageWords(10, 1, 1, VORN_CS_GRAY),
         "\x7F\x80\x80\x80\x80\x80\x80\x80\x80\x01", "P4\n10 1\n\x80\x40"},
        {"", "a.pam", imageWords(1, 1, 1, VORN_CS_GRAY), "g",
         pam + "1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
        {"", "b.pnm", imageWords(1, 1, 4, VORN_CS_RGB), "rgba",
         pam + "4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nrgba"},
        {"", "b.pgm", imageWords(1, 1, 2, VORN_CS_GRAY, 2), "lhLH",
         pam + "2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nhlHL"},
        {plain, "a.pbm", imageWords(3, 1, 1, VORN_CS_GRAY), "\x7F\x80\x10", "P1\n3 1\n1 0 1\n"},
        {plain, "b.pbm", imageWords(40, 1, 1, VORN_CS_GRAY), black, "P1\n40 1\n" + zeros + '\n'},
        {plain, "a.pgm", imageWords(2, 2, 1, VORN_CS_GRAY), "\xFF\x07\x0A\x64",
         "P2\n2 2\n255\n255 7\n10 100\n"},
        {plain, "b.pgm", imageWords(1, 2, 1, VORN_CS_GRAY, 2), std::string("\x01\x02\xFF\xFF", 4),
         "P2\n1 2\n65535\n513\n65535\n"},
        {plain, "a.ppm", imageWords(1, 1, 3, VORN_CS_RGB), "abc", "P3\n1 1\n255\n97 98 99\n"},
        {plain, "b.ppm", imageWords(2, 1, 1, VORN_CS_GRAY), "ab",
         "P3\n2 1\n255\n97 97 97 98 98 98\n"},
        {plain, "a.pam", imageWords(1, 1, 1, VORN_CS_GRAY), "g",
         pam + "1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
    };
    for (const auto& [form, name, image, samples, file] : cases) {
        settings_.store("pnm", form);
        save<PnmSaver>(files_.path(name), image, bytesOf(samples));
        EXPECT_EQ(files_.read(name), file) << form << name;
    }
}

TEST_F(Pnm, RefusesWhatItCannotHold) {
    const auto failure = [&](const char* name, std::vector<VORN_Word> description) {
        return saveFailure<PnmSaver>(files_.path(name), std::move(description));
    };
    EXPECT_EQ(failure("a.pgm", imageWords(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pbm", imageWords(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", imageWords(0, 1, 3, VORN_CS_RGB)), formats::kSizeOutOfRange);
    EXPECT_EQ(failure("a.pnm", {ITAG_Width, 1}), formats::kNoSize);
    EXPECT_EQ(failureOf([] {
                  formats::imageToSave(Message({ITAG_Width, 1}).list());
              }),
              formats::kNoFileName);
}

}  // namespace
