#include "tests/tools/tool.h"

namespace {

class BadFiles : public testing::Test {
  protected:
    ScratchDirectory scratch_;
    std::string good_ = scratch_.write("good.pgm", anymap("P5", 2, 1, {1, 2}));
    std::string out_ = scratch_.write("out.png", "as it was");
};

TEST_F(BadFiles, AreNamedWithTheReasonAndLeaveTheTargetAsItWas) {
    expectDone(vorn({"convert", good_, scratch_.path("whole.png")}));
    const std::string whole = scratch_.read("whole.png");
    std::string damaged = whole;
    damaged.back() ^= 1;  // found when all lines have come, in the checksum of the last part
    const struct {
        std::string file;
        const char* numbers;
        bool isPicture = false;
    } cases[] = {
        {scratch_.path("missing.png"), "20, 2"},
        {scratch_.makeDirectory("directory"), "20, 21"},
        {scratch_.write("empty", ""), "28, 0"},
        {scratch_.write("text.txt", "Dear reader,\n"), "28, 0"},
        {scratch_.write("head.ppm", "P6\n3 "), "2002, 0"},
        {scratch_.write("half.pgm", anymap("P5", 9, 9, {1, 2, 3})), "2002, 0", true},
        {scratch_.write("cut.png", whole.substr(0, whole.size() - 20)), "2002, 0", true},
        {scratch_.write("damaged.png", damaged), "2002, 0", true},
    };
    for (const auto& c : cases) {
        if (!c.isPicture) expectFailure(vorn({"info", c.file}), c.file, c.numbers);
        expectFailure(vorn({"convert", c.file, out_}), c.file, c.numbers);
        EXPECT_EQ(contentOf(out_), "as it was");
    }
}

TEST_F(BadFiles, DoNotKeepTheOthersFromBeingShown) {
    const Ended ended = vorn({"info", scratch_.path("mis\x1b[2Jsing"), good_});
    expectFailure(ended, scratch_.path("mis\\x1b[2Jsing"), "20, 2");
    EXPECT_TRUE(ended.out.starts_with(good_ + "\n")) << ended.out;
}

TEST_F(BadFiles, ThatCanNotBeWrittenAreNamedAsTheTarget) {
    const struct {
        std::string file;
        const char* reason;
        Arguments options = {};
    } cases[] = {{scratch_.path("no/such/place.png"), "No such file or directory (20, 2)"},
                 {scratch_.makeDirectory("folder.png"), "(20, 21)"},
                 {"/dev/full", "No space left on device (0x8000025, 28)", {"--saver", "pnm"}},
                 {scratch_.path("a.xyz"), "(3001, 0)"},
                 {scratch_.path("none"), "(3001, 0)"},
                 {scratch_.path("a.pgm"), "CMYK (2004, 0)", {"--colorspace", "CMYK"}}};
    for (const auto& [file, reason, options] : cases) {
        const Ended ended = vorn(joined({"convert", good_, file}, options));
        EXPECT_EQ(ended.status, 1);
        EXPECT_TRUE(ended.err.starts_with("vorn: " + file + ": ")) << ended.err;
        EXPECT_TRUE(ended.err.ends_with(std::string(reason) + '\n')) << ended.err;
    }
    // good.pgm, out.png, folder.png: nothing was left behind.
    const std::filesystem::directory_iterator entries(scratch_.path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 3);
}

TEST_F(BadFiles, ThatAModuleCanNotServeSayWhy) {
    const ScratchHome home;
    home.write("Loaders/broken", "no program");
    home.write("Savers/broken", "no program");
    const Ended ended = vorn({"info", "--loader", "broken", good_});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.ends_with(" (0x8000013, 13)\n")) << ended.err;
}

}  // namespace
