#include "tests/tools/tool.h"

namespace {

class Progress : public testing::Test {
  protected:
    Ended convert(bool onTerminal, const Arguments& options = {}) {
        return vorn(joined({"convert", in_, scratch_.path("out.pgm")}, options),
                    {.errorIsTerminal = onTerminal});
    }

    ScratchDirectory scratch_;
    std::string in_ = scratch_.write("in.pgm", anymap("P5", 10, 1000, std::vector<uint8_t>(10000)));
};

TEST_F(Progress, GoesFromNothingToAllAndLeavesAnEmptyLine) {
    const Ended ended = convert(true);
    EXPECT_EQ(ended.status, 0);
    for (const char* percent : {"  0 %", " 50 %", "100 %"})
        EXPECT_NE(ended.err.find(percent), std::string::npos) << percent;
    EXPECT_TRUE(ended.err.ends_with("\r\x1b[K")) << "taken away again";
    EXPECT_EQ(ended.err.find('\n'), std::string::npos) << "all on one line";
}

TEST_F(Progress, IsNotShownWithoutATerminalOrWhenNotWanted) {
    expectDone(convert(false));
    expectDone(convert(true, {"--quiet"}));
}

TEST_F(Progress, MakesRoomForAnErrorLine) {
    const Ended ended =
        vorn({"convert", in_, scratch_.path("none/out.pgm")}, {.errorIsTerminal = true});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("\r\x1b[Kvorn: "), std::string::npos) << ended.err;
}

}  // namespace
