#include "tests/tools/tool.h"

namespace {

class FieldsOfPictures : public testing::Test {
  protected:
    FieldsOfPictures() {
        const std::string in = scratch_.write("in.pgm", anymap("P5", 2, 1, {1, 2}));
        expectDone(vorn({"convert", in, png_, "--set", "Artist=Me and you", "--set",
                         "itag_description=a=b", "--set", "xdpi=300", "--set", "YDPI=150"}));
    }

    // What is shown of the picture, converted once more.
    json after(const Arguments& options) {
        expectDone(vorn(joined({"convert", png_, other_}, options)));
        return shownAsJson({"info", other_})[0];
    }

    ScratchDirectory scratch_;
    std::string png_ = scratch_.path("a.png");
    std::string other_ = scratch_.path("b.png");
};

TEST_F(FieldsOfPictures, AreSetOnTheCommandLineAndReadBack) {
    const json image = shownAsJson({"info", png_})[0];
    const json expected = json::parse(R"({
        "fields": {"Artist": "Me and you", "Description": "a=b"}, "xDpi": 300, "yDpi": 150,
        "width": 2, "height": 1, "depth": 8, "colorSpace": "Gray", "alpha": false, "loader": "png"
    })");
    for (const auto& [name, value] : expected.items()) EXPECT_EQ(image[name], value) << name;
}

TEST_F(FieldsOfPictures, AreCarriedUnlessChangedOrDropped) {
    const json image = after({"--set", "Artist=", "--set", "Software=test", "--set", "YDPI="});
    EXPECT_EQ(image["fields"], json({{"Description", "a=b"}, {"Software", "test"}}));
    EXPECT_EQ(image["xDpi"], 300);
}

TEST_F(FieldsOfPictures, TurnWithThePicture) {
    const json image = after({"--orientation", "1"});
    EXPECT_EQ(image["xDpi"], 150);
    EXPECT_EQ(image["yDpi"], 300);
    EXPECT_EQ(image["height"], 2);
}

TEST_F(FieldsOfPictures, AreShownInAlignedLinesWithoutControlCharacters) {
    after({"--set", "Artist=a\x1b]0;title\x07z"});
    const Ended ended = vorn({"info", other_, png_});
    expectDone(ended);
    EXPECT_TRUE(ended.out.starts_with(other_ + "\n"
                                               "  Size          2 x 1\n"
                                               "  Channels      1\n"
                                               "  Depth         8 bits\n"
                                               "  Colour space  Gray\n"))
        << ended.out;
    EXPECT_NE(ended.out.find("Artist        a\\x1b]0;title\\x07z\n"), std::string::npos);
    EXPECT_NE(ended.out.find("  Loader        png\n\n" + png_), std::string::npos) << ended.out;
    EXPECT_EQ(vorn({"info", "--json", other_}).out.find('\x1b'), std::string::npos);
}

}  // namespace
