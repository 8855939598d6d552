#include <filesystem>

#include "tests/tools/tool.h"

namespace {

// A PNG of 3 x 2 palette indices: 0 1 2 / 2 1 0, with red, green and blue as the palette.
const std::string kPalettePng(
    "\211PNG\15\12\32\12"
    "\0\0\0\15IHDR\0\0\0\3\0\0\0\2\10\3\0\0\0\252\252\226("
    "\0\0\0\11PLTE\377\0\0\0\377\0\0\0\377-J\315\212"
    "\0\0\0\20IDATx\332c``db`bd\0\0\0 \0\7\365*\337/"
    "\0\0\0\0IEND\256B`\202",
    94);

class Convert : public testing::Test {
  protected:
    // Converts a picture through the files named and answers what is in the last one.
    std::string through(const std::string& bytes, const Arguments& names, Arguments options = {}) {
        std::string in = scratch_.write("in", bytes);
        for (const std::string& name : names) {
            expectDone(vorn(joined({"convert", in, scratch_.path(name)}, options)));
            options.clear();
            in = scratch_.path(name);
        }
        return contentOf(in);
    }

    json info(const std::string& name) { return shownAsJson({"info", scratch_.path(name)})[0]; }

    ScratchDirectory scratch_;
};

TEST_F(Convert, KeepsAPaletteOrLooksItsColorsUp) {
    const std::string colors = anymap("P6", 3, 2,
                                      {255, 0, 0, 0, 255, 0, 0, 0, 255,  //
                                       0, 0, 255, 0, 255, 0, 255, 0, 0});
    EXPECT_EQ(through(kPalettePng, {"colors.ppm"}), colors);
    EXPECT_EQ(through(kPalettePng, {"again.PNG", "colors.ppm"}), colors);
    EXPECT_EQ(info("again.PNG")["colorSpace"], "CMAPPED");
    EXPECT_EQ(info("again.PNG")["paletteEntries"], 3);
    EXPECT_EQ(through(kPalettePng, {"rgb.png", "colors.ppm"}, {"--colorspace", "RGB"}), colors);
    EXPECT_EQ(info("rgb.png")["colorSpace"], "RGB");
}

TEST_F(Convert, CarriesAlpha) {
    const std::string pam =
        "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
        "\x01\x02\x03\x04\x05\x06\x07\xff";
    EXPECT_EQ(through(pam, {"a.png", "b.pam"}), pam);
    EXPECT_EQ(info("a.png")["alpha"], true);
    EXPECT_EQ(info("a.png")["channels"], 4);
}

TEST_F(Convert, MayReplaceThePictureThatItReads) {
    const std::string path = scratch_.write("one", anymap("P5", 2, 1, {1, 2}));
    expectDone(vorn({"convert", path, path, "--orientation", "2", "--saver", "PNM"}));
    EXPECT_EQ(contentOf(path), anymap("P5", 2, 1, {2, 1}));
}

TEST_F(Convert, ScalesThePicture) {
    const std::string in = anymap("P5", 4, 2, {10, 20, 30, 40, 50, 60, 70, 80});
    const auto scaled = [&](const Arguments& options) { return through(in, {"a.pgm"}, options); };
    EXPECT_EQ(scaled({"--size", "50%"}), anymap("P5", 2, 1, {35, 55}));
    EXPECT_EQ(scaled({"--fit", "9x9"}), in);
    EXPECT_EQ(scaled({"--size", "2", "--scaler", "fastest"}), anymap("P5", 2, 1, {10, 30}));
    // Turned: the size is that of the picture that comes out.
    EXPECT_EQ(scaled({"--orientation", "1", "--size", "1x2!"}), anymap("P5", 1, 2, {35, 55}));
    through(kPalettePng, {"colors.png"}, {"--size", "6x4"});
    EXPECT_EQ(info("colors.png")["colorSpace"], "RGB");
}

// A loader that decodes no more than is needed must change neither the size nor the look.
TEST_F(Convert, LetsTheLoaderReduceALargePicture) {
    if (!std::filesystem::exists(std::string(VORN_BUILT_HOME) + "/Loaders/jpeg")) GTEST_SKIP();
    std::vector<uint8_t> samples;
    for (unsigned i = 0; i < 101 * 83; ++i) samples.push_back(static_cast<uint8_t>(i % 101 * 2));
    const std::string large =
        through(anymap("P5", 101, 83, samples), {"large.jpg"}, {"--colorspace", "RGB"});
    const std::string whole = through(large, {"all.ppm"});
    const struct {
        Arguments options;
        int width, height;
    } kSizes[] = {{{"--size", "11"}, 11, 9},
                  {{"--size", "10%"}, 10, 8},
                  {{"--fit", "12x9"}, 11, 9},
                  {{"--size", "x11", "--orientation", "1"}, 9, 11},
                  {{"--size", "7x30!"}, 7, 30}};
    for (const auto& [options, width, height] : kSizes) {
        SCOPED_TRACE(testing::PrintToString(options));
        const std::string reduced = through(large, {"reduced.ppm"}, options);
        EXPECT_EQ(info("reduced.ppm")["width"], width);
        EXPECT_EQ(info("reduced.ppm")["height"], height);
        const std::string scaled = through(whole, {"scaled.ppm"}, options);
        ASSERT_EQ(reduced.size(), scaled.size());
        for (size_t i = 12; i < reduced.size(); ++i)
            EXPECT_NEAR(static_cast<uint8_t>(reduced[i]), static_cast<uint8_t>(scaled[i]), 8);
    }
}

TEST_F(Convert, ReadsThePageThatIsAskedFor) {
    if (!std::filesystem::exists(std::string(VORN_BUILT_HOME) + "/Loaders/gif")) GTEST_SKIP();
    through(anymap("P5", 1, 1, {7}), {"one.gif"});
    EXPECT_EQ(info("one.gif")["pages"], 1);
    const std::string one = scratch_.path("one.gif");
    expectFailure(vorn({"convert", one, scratch_.path("a.ppm"), "--page", "2"}), one, "2012, 0");
}

}  // namespace
