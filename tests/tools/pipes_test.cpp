#include "tests/tools/tool.h"

namespace {

// Commands of a shell, in which $vorn is the tool, $in a picture and $out a file that doesn't
// exist.
class Pipes : public testing::Test {
  protected:
    Ended shell(const std::string& command) {
        scratch_.remove("out.ppm");
        return run({"bash", "-c", command},
                   {.environment = {std::string("vorn=") + VORN_TOOL, "in=" + in_,
                                    "out=" + scratch_.path("out.ppm"), "TMPDIR=" + kept_}});
    }

    ScratchDirectory scratch_;
    std::string kept_ = scratch_.makeDirectory("kept");
    std::string picture_ = anymap("P6", 2, 1, {1, 2, 3, 4, 5, 6});
    std::string in_ = scratch_.write("in", picture_);
};

TEST_F(Pipes, CarryPicturesInAllWaysThatShellsHave) {
    for (const char* command :
         {"cat $in | $vorn convert - $out", "$vorn convert - $out <$in",
          "cat $in | $vorn convert /dev/stdin $out", "$vorn convert /dev/stdin $out <$in",
          "$vorn convert <(cat $in) $out",
          "mkfifo $out.1; cat $in >$out.1 & $vorn convert $out.1 $out",
          "(echo gone; cat $in) >$out.2; (read -r line; $vorn convert - $out) <$out.2",
          "$vorn convert $in - --saver pnm >$out", "$vorn convert $in - --saver pnm | cat >$out",
          "$vorn convert $in /dev/stdout --saver pnm >$out",
          "$vorn convert $in /proc/self/fd/7 --saver pnm 7>$out",
          "mkfifo $out.3; cat $out.3 >$out & $vorn convert $in $out.3 --saver pnm; wait",
          "$vorn convert $in - --saver tga | $vorn convert - - --saver bmp | $vorn convert - $out",
          "$vorn convert $in $out <&- >&- 2>&-"}) {
        SCOPED_TRACE(command);
        expectDone(shell(command));
        EXPECT_EQ(scratch_.read("out.ppm"), picture_);
    }
    EXPECT_TRUE(shell("cat $in | $vorn info -").out.starts_with("-\n  Size          2 x 1\n"));
    EXPECT_TRUE(std::filesystem::is_empty(kept_)) << "what the pictures passed through";
}

TEST_F(Pipes, GetNothingOfAPictureThatFails) {
    expectFailure(shell("head -c12 $in | $vorn convert - - --saver pnm >$out"), "-", "2002, 0");
    EXPECT_EQ(scratch_.read("out.ppm"), "");
    const struct {
        const char* command;
        const char* numbers;
        const char* name = "-";
    } kUnusable[] = {{"$vorn convert - $out <&-", "0x8000016, 9"},
                     {"$vorn convert $in - --saver pnm >&-", "0x8000025, 9"},
                     {"$vorn convert $in - --saver pnm >/dev/full", "0x8000025, 28"},
                     {"$vorn convert $in -", "3001, 0"},
                     {"TMPDIR=$out $vorn convert $in - --saver pnm", "0x8000025, 2", "$out"},
                     {"$vorn info $in >/dev/full", "0x8000025, 28", "standard output"}};
    for (const auto& c : kUnusable) {
        SCOPED_TRACE(c.command);
        const std::string name = c.name == std::string("$out") ? scratch_.path("out.ppm") : c.name;
        expectFailure(shell(c.command), name, c.numbers);
    }
    const Ended shown =
        run({"sh", "-c", std::string(VORN_TOOL) + " convert " + in_ + " - --saver pnm >&2"},
            {.errorIsTerminal = true});
    EXPECT_NE(shown.err.find("terminal"), std::string::npos) << shown.err;
    EXPECT_EQ(shown.err.find("P6"), std::string::npos);
}

}  // namespace
