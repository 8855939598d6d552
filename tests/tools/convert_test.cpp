#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/tools/tool.h"

namespace {

using nlohmann::json;

class Convert : public testing::Test {
  protected:
    // Converts a picture through the files named and answers what is in the last one.
    std::string through(const std::string& bytes,
                        const std::vector<std::string>& names,
                        const std::vector<std::string>& options = {}) {
        std::string in = scratch_.write("in", bytes);
        for (const std::string& name : names) {
            std::vector<std::string> arguments = {"convert", in, scratch_.path(name)};
            if (name == names.front()) {
                arguments.insert(arguments.end(), options.begin(), options.end());
            }
            expectDone(vorn(arguments));
            in = scratch_.path(name);
        }
        return contentsOf(in);
    }

    json info(const std::string& name) {
        const Ended ended = vorn({"info", "--json", scratch_.path(name)});
        expectDone(ended);
        return json::parse(ended.out)[0];
    }

    ScratchDirectory scratch_;
};

TEST_F(Convert, KeepsEverySampleFromPnmToPngAndBack) {
    const std::vector<std::string> pictures = {
        anymap("P5", 3, 2, 255, {0, 1, 127, 128, 254, 255}),
        anymap("P6", 2, 1, 255, {255, 0, 3, 4, 128, 6}),
        anymap("P5", 2, 2, 65535, {0, 1, 0x1234, 65535}),
        anymap("P6", 1, 2, 65535, {0x0102, 0x0304, 0x0506, 0xFF00, 0x00FF, 0x8000}),
        anymap("P6", 1, 1, 255, {9, 8, 7}),
    };
    for (const std::string& picture : pictures) {
        EXPECT_EQ(through(picture, {"a.png", "b.pnm"}), picture);
    }
    EXPECT_EQ(through(pictures[0], {"a.PNG", "b.pgm"}), pictures[0]) << "endings in any case";
}

TEST_F(Convert, TurnsAndMirrorsThePicture) {
    //   1 2 3
    //   4 5 6
    const std::string picture = anymap("P5", 3, 2, 255, {1, 2, 3, 4, 5, 6});
    const std::vector<std::string> expected = {
        picture,
        anymap("P5", 2, 3, 255, {4, 1, 5, 2, 6, 3}),
        anymap("P5", 3, 2, 255, {6, 5, 4, 3, 2, 1}),
        anymap("P5", 2, 3, 255, {3, 6, 2, 5, 1, 4}),
        anymap("P5", 3, 2, 255, {3, 2, 1, 6, 5, 4}),
        anymap("P5", 2, 3, 255, {6, 3, 5, 2, 4, 1}),
        anymap("P5", 3, 2, 255, {4, 5, 6, 1, 2, 3}),
        anymap("P5", 2, 3, 255, {1, 4, 2, 5, 3, 6}),
    };
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(through(picture, {"turned.pgm"}, {"--orientation", std::to_string(i)}),
                  expected[i])
            << "orientation " << i;
    }
}

TEST_F(Convert, ChangesColorSpaceAndDepthOnRequest) {
    const std::string colors = anymap("P6", 2, 1, 255, {30, 60, 90, 255, 255, 255});
    EXPECT_EQ(through(colors, {"grey.pnm"}, {"--colorspace", "gray"}),
              anymap("P5", 2, 1, 255, {60, 255}));
    EXPECT_EQ(through(anymap("P5", 1, 1, 255, {77}), {"rgb.pnm"}, {"--colorspace", "RGB"}),
              anymap("P6", 1, 1, 255, {77, 77, 77}));
    EXPECT_EQ(through(anymap("P5", 1, 1, 255, {0xAB}), {"deep.pgm"}, {"--depth", "16"}),
              anymap("P5", 1, 1, 65535, {0xABAB}));
    EXPECT_EQ(through(anymap("P5", 1, 1, 65535, {0xABCD}), {"flat.pgm"}, {"--depth", "8"}),
              anymap("P5", 1, 1, 255, {0xAB}));
}

TEST_F(Convert, KeepsAPaletteOrLooksItsColorsUp) {
    const std::string colors = anymap("P6", 3, 2, 255,
                                      {255, 0, 0, 0, 255, 0, 0, 0, 255,  //
                                       0, 0, 255, 0, 255, 0, 255, 0, 0});
    EXPECT_EQ(through(palettePng(), {"colors.ppm"}), colors);
    EXPECT_EQ(through(palettePng(), {"again.png", "colors.ppm"}), colors);
    EXPECT_EQ(info("again.png")["colorSpace"], "CMAPPED");
    EXPECT_EQ(info("again.png")["paletteEntries"], 3);
    EXPECT_EQ(through(palettePng(), {"rgb.png", "colors.ppm"}, {"--colorspace", "RGB"}), colors);
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
    const std::string path = scratch_.write("one.pgm", anymap("P5", 2, 1, 255, {1, 2}));
    expectDone(vorn({"convert", path, path, "--orientation", "2"}));
    EXPECT_EQ(contentsOf(path), anymap("P5", 2, 1, 255, {2, 1}));
}

TEST_F(Convert, TakesTheSaverAndLoaderThatItIsTold) {
    const std::string picture = anymap("P5", 2, 1, 255, {1, 2});
    EXPECT_EQ(through(picture, {"no-ending"}, {"--saver", "PNM", "--loader", "pnm"}), picture);
}

TEST_F(Convert, ScalesThePicture) {
    const std::vector<unsigned> columns = {10, 20, 30, 40, 50, 60, 70, 80};
    const std::string in = anymap("P5", 4, 2, 255, columns);
    EXPECT_EQ(through(in, {"half.pgm"}, {"--size", "50%"}), anymap("P5", 2, 1, 255, {35, 55}));
    EXPECT_EQ(through(in, {"exact.pgm"}, {"--size", "1x2!"}), anymap("P5", 1, 2, 255, {25, 65}));
    EXPECT_EQ(through(in, {"same.pgm"}, {"--fit", "9x9"}), in);
    EXPECT_EQ(through(in, {"near.pgm"}, {"--size", "2", "--scaler", "fastest"}),
              anymap("P5", 2, 1, 255, {10, 30}));
    // Turned: the size is that of the picture that comes out.
    EXPECT_EQ(through(in, {"turned.pgm"}, {"--orientation", "1", "--size", "1x2!"}),
              anymap("P5", 1, 2, 255, {35, 55}));
    through(palettePng(), {"colors.png"}, {"--size", "6x4"});
    EXPECT_EQ(info("colors.png")["colorSpace"], "RGB");
    EXPECT_EQ(
        vorn({"convert", scratch_.path("in"), scratch_.path("x.pgm"), "--size", "5y5"}).status, 2);
}

// A loader that decodes no more than is needed must change neither the size nor the look.
TEST_F(Convert, LetsTheLoaderReduceALargePicture) {
    if (!std::filesystem::exists(std::string(VORN_BUILT_HOME) + "/Loaders/jpeg")) GTEST_SKIP();
    std::vector<unsigned> samples;
    for (unsigned i = 0; i < 101 * 83; ++i) samples.push_back(i % 101 * 2);
    through(anymap("P5", 101, 83, 255, samples), {"large.jpg"}, {"--colorspace", "RGB"});
    const std::string large = contentsOf(scratch_.path("large.jpg"));
    const std::string whole = through(large, {"all.ppm", "small.ppm"});
    const struct {
        std::vector<std::string> options;
        int width, height;
    } kSizes[] = {{{"--size", "11"}, 11, 9},
                  {{"--size", "10%"}, 10, 8},
                  {{"--fit", "12x9"}, 11, 9},
                  {{"--size", "x11", "--orientation", "1"}, 9, 11},
                  {{"--size", "7x30!"}, 7, 30}};
    for (const auto& [options, width, height] : kSizes) {
        SCOPED_TRACE(testing::PrintToString(options));
        const std::string reduced = through(large, {"reduced.ppm"}, options);
        through(whole, {"scaled.ppm"}, options);
        EXPECT_EQ(info("reduced.ppm")["width"], width);
        EXPECT_EQ(info("reduced.ppm")["height"], height);
        const std::string scaled = contentsOf(scratch_.path("scaled.ppm"));
        ASSERT_EQ(reduced.size(), scaled.size());
        for (size_t i = 12; i < reduced.size(); ++i) {
            EXPECT_NEAR(static_cast<uint8_t>(reduced[i]), static_cast<uint8_t>(scaled[i]), 8);
        }
    }
}

TEST_F(Convert, ReadsThePageThatIsAskedFor) {
    const std::string file = scratch_.write("in.ppm", anymap("P5", 1, 1, 255, {7}));
    EXPECT_EQ(vorn({"info", file, "--page", "0"}).status, 2);
    if (!std::filesystem::exists(std::string(VORN_BUILT_HOME) + "/Loaders/gif")) GTEST_SKIP();
    through(anymap("P5", 1, 1, 255, {7}), {"one.gif"});
    EXPECT_EQ(info("one.gif")["pages"], 1);
    const std::string one = scratch_.path("one.gif");
    expectFailure(vorn({"convert", one, file, "--page", "2"}), one, "2012, 0");
}

}  // namespace
