#include <gtest/gtest.h>

#include "tests/tools/tool.h"

namespace {

class BadFiles : public testing::Test {
  protected:
    // Expects that neither command can read the file, for the same reason.
    void expectUnreadable(const std::string& file, const std::string& numbers) {
        expectFailure(vorn({"info", file}), file, numbers);
        expectFailure(vorn({"convert", file, out_}), file, numbers);
        EXPECT_EQ(contentsOf(out_), "as it was");
    }

    ScratchDirectory scratch_;
    std::string good_ = scratch_.write("good.pgm", anymap("P5", 2, 1, 255, {1, 2}));
    std::string out_ = scratch_.write("out.png", "as it was");
};

TEST_F(BadFiles, ThatAreNoPicturesAreNamedWithTheReason) {
    expectUnreadable(scratch_.path("missing.png"), "20, 2");
    expectUnreadable(scratch_.makeDirectory("directory"), "20, 21");
    expectUnreadable(scratch_.write("empty", ""), "28, 0");
    expectUnreadable(scratch_.write("text.txt", "Dear reader,\n"), "28, 0");
    expectUnreadable(scratch_.write("head.ppm", "P6\n3 "), "2002, 0");
}

TEST_F(BadFiles, ThatEndTooEarlyLeaveTheTargetAsItWas) {
    const std::string half =
        scratch_.write("half.pgm", anymap("P5", 100, 100, 255, std::vector<unsigned>(5000)));
    expectFailure(vorn({"convert", half, out_}), half, "2002, 0");
    EXPECT_EQ(contentsOf(out_), "as it was");

    expectDone(vorn({"convert", good_, scratch_.path("whole.png")}));
    const std::string whole = contentsOf(scratch_.path("whole.png"));
    const std::string cut = scratch_.write("cut.png", whole.substr(0, whole.size() - 20));
    expectFailure(vorn({"convert", cut, out_}), cut, "2002, 0");
    EXPECT_EQ(contentsOf(out_), "as it was");
}

// The lines have all come when the damage is found, in the checksum of the last part of the file.
TEST_F(BadFiles, WithDamageBehindThePixelsAreDamaged) {
    expectDone(vorn({"convert", good_, scratch_.path("whole.png")}));
    std::string bytes = contentsOf(scratch_.path("whole.png"));
    bytes.back() ^= 1;
    const std::string damaged = scratch_.write("damaged.png", bytes);
    expectFailure(vorn({"convert", damaged, out_}), damaged, "2002, 0");
    EXPECT_EQ(contentsOf(out_), "as it was");
}

TEST_F(BadFiles, DoNotKeepTheOthersFromBeingShown) {
    const Ended ended = vorn({"info", scratch_.path("missing"), good_});
    expectFailure(ended, scratch_.path("missing"), "20, 2");
    EXPECT_TRUE(ended.out.starts_with(good_ + "\n")) << ended.out;
}

TEST_F(BadFiles, AreNamedWithoutControlCharacters) {
    expectFailure(vorn({"info", "mis\x1b[2Jsing"}), "mis\\x1b[2Jsing", "20, 2");
}

TEST_F(BadFiles, ThatCanNotBeWrittenAreNamedAsTheTarget) {
    const std::string nowhere = scratch_.path("no/such/place.png");
    const Ended missing = vorn({"convert", good_, nowhere});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.starts_with("vorn: " + nowhere + ": ")) << missing.err;
    EXPECT_NE(missing.err.find("No such file or directory"), std::string::npos) << missing.err;

    const std::string directory = scratch_.makeDirectory("folder.png");
    const Ended taken = vorn({"convert", good_, directory});
    EXPECT_EQ(taken.status, 1);
    EXPECT_TRUE(taken.err.starts_with("vorn: " + directory + ": ")) << taken.err;

    const Ended full = vorn({"convert", good_, "/dev/full", "--saver", "pnm"});
    expectFailure(full, "/dev/full", "0x8000025, 28");
    EXPECT_NE(full.err.find("No space left"), std::string::npos) << full.err;

    expectFailure(vorn({"convert", good_, scratch_.path("a.xyz")}), scratch_.path("a.xyz"),
                  "3001, 0");
    expectFailure(vorn({"convert", good_, scratch_.path("none")}), scratch_.path("none"),
                  "3001, 0");
    // good.pgm, out.png, folder.png: nothing was left behind.
    const std::filesystem::directory_iterator entries(scratch_.path());
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 3);
}

TEST_F(BadFiles, ThatAModuleCanNotServeSayWhy) {
    const Ended wrongSaver =
        vorn({"convert", good_, scratch_.path("a.pgm"), "--colorspace", "CMYK"});
    expectFailure(wrongSaver, scratch_.path("a.pgm"), "2004, 0");
    EXPECT_NE(wrongSaver.err.find("CMYK"), std::string::npos);

    const ScratchHome home;
    home.write("Loaders/broken", "no program");
    home.write("Savers/broken", "no program");
    const Ended ended = vorn({"info", "--loader", "broken", good_});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.ends_with(" (0x8000013, 13)\n")) << ended.err;
}

}  // namespace
