#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tools/tool.h"

namespace {

using nlohmann::json;

class FieldsOfPictures : public testing::Test {
  protected:
    FieldsOfPictures() {
        const std::string in = scratch_.write("in.pgm", anymap("P5", 2, 1, 255, {1, 2}));
        expectDone(vorn({"convert", in, png_, "--set", "Artist=Me and you", "--set",
                         "itag_description=a=b", "--set", "xdpi=300", "--set", "YDPI=150"}));
    }

    json info(const std::string& path) {
        const Ended ended = vorn({"info", "--json", path});
        expectDone(ended);
        return json::parse(ended.out)[0];
    }

    ScratchDirectory scratch_;
    std::string png_ = scratch_.path("a.png");
    std::string other_ = scratch_.path("b.png");
};

TEST_F(FieldsOfPictures, AreSetOnTheCommandLineAndReadBack) {
    const json image = info(png_);
    EXPECT_EQ(image["fields"]["Artist"], "Me and you");
    EXPECT_EQ(image["fields"]["Description"], "a=b");
    EXPECT_EQ(image["xDpi"], 300);
    EXPECT_EQ(image["yDpi"], 150);
    EXPECT_EQ(image["width"], 2);
    EXPECT_EQ(image["depth"], 8);
    EXPECT_EQ(image["colorSpace"], "Gray");
    EXPECT_EQ(image["loader"], "png");
}

TEST_F(FieldsOfPictures, AreCarriedUnlessChangedOrDropped) {
    expectDone(vorn({"convert", png_, other_, "--set", "Artist=", "--set", "Software=test"}));
    const json image = info(other_);
    EXPECT_FALSE(image["fields"].contains("Artist"));
    EXPECT_EQ(image["fields"]["Description"], "a=b");
    EXPECT_EQ(image["fields"]["Software"], "test");
    EXPECT_EQ(image["xDpi"], 300);
}

TEST_F(FieldsOfPictures, TurnWithThePicture) {
    expectDone(vorn({"convert", png_, other_, "--orientation", "1"}));
    EXPECT_EQ(info(other_)["xDpi"], 150);
    EXPECT_EQ(info(other_)["yDpi"], 300);
    EXPECT_EQ(info(other_)["height"], 2);
}

TEST_F(FieldsOfPictures, ReachTheTerminalWithoutControlCharacters) {
    expectDone(vorn({"convert", png_, other_, "--set", "Artist=a\x1b]0;title\x07z"}));
    const Ended ended = vorn({"info", other_});
    expectDone(ended);
    EXPECT_NE(ended.out.find("Artist        a\\x1b]0;title\\x07z\n"), std::string::npos)
        << ended.out;
    EXPECT_EQ(vorn({"info", "--json", other_}).out.find('\x1b'), std::string::npos);
}

TEST_F(FieldsOfPictures, AreShownInAlignedLines) {
    const Ended ended = vorn({"info", png_, png_});
    expectDone(ended);
    EXPECT_TRUE(ended.out.starts_with(png_ + "\n"
                                             "  Size          2 x 1\n"
                                             "  Channels      1\n"
                                             "  Depth         8 bits\n"
                                             "  Colour space  Gray\n"))
        << ended.out;
    EXPECT_NE(ended.out.find("  Loader        png\n\n" + png_), std::string::npos) << ended.out;
}

}  // namespace
