#include <gtest/gtest.h>

#include "tests/tools/tool.h"

namespace {

TEST(CommandLine, RefusesWrongUsageWithStatus2BeforeAnythingIsDone) {
    const ScratchDirectory scratch;
    const std::string in = scratch.write("in.ppm", anymap("P6", 1, 1, 255, {1, 2, 3}));
    const std::string out = scratch.path("out.ppm");
    const std::vector<Arguments> wrong = {
        {},
        {"paint"},
        {"info"},
        {"info", in, "--nonsense"},
        {"info", in, "--loader", "nosuch"},
        {"convert", in},
        {"convert", in, out, "more"},
        {"convert", in, out, "--depth", "12"},
        {"convert", in, out, "--colorspace", "Lab"},
        {"convert", in, out, "--colorspace", "None"},
        {"convert", in, out, "--orientation", "8"},
        {"convert", in, out, "--orientation", "-1"},
        {"convert", in, out, "--saver", "nosuch"},
        {"convert", in, out, "--loader", "nosuch"},
        {"convert", in, out, "--set", "Artist"},
        {"convert", in, out, "--set", "Width=10"},
        {"convert", in, out, "--set", "XDPI=fine"},
        {"convert", in, out, "--size", "5y5"},
        {"info", in, "--page", "0"},
        {"explain"},
        {"explain", "seven"},
        {"explain", "0x"},
        {"explain", "4294967296"},
        {"explain", "17", "x"},
    };
    for (const auto& arguments : wrong) {
        const Ended ended = vorn(arguments);
        const std::string line = testing::PrintToString(arguments);
        EXPECT_EQ(ended.status, 2) << line;
        EXPECT_EQ(ended.out, "") << line;
        EXPECT_TRUE(ended.err.starts_with("vorn: ")) << line << ended.err;
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

TEST(CommandLine, TellsAboutItselfOnRequest) {
    for (const std::string command : {"info", "convert", "modules", "settings", "explain"}) {
        const Ended ended = vorn({command, "--help"});
        expectDone(ended);
        EXPECT_NE(ended.out.find("vorn " + command), std::string::npos) << ended.out;
    }
    expectDone(vorn({"--help"}));
    EXPECT_EQ(vorn({"--version"}).out, "vorn, library version 1\n");
}

TEST(CommandLine, ExplainsNumbersInDecimalAndHexadecimal) {
    const std::string missing =
        "The module program could not be started,  No such file or directory";
    const std::pair<Arguments, std::string> cases[] = {
        {{"17"}, "There is not enough memory"},
        {{"0x11"}, "There is not enough memory"},
        {{"0x8000013", "2"}, missing},
        {{"134217747", "0x2"}, missing},
        {{"123456"}, "Code #123456,0 (Unknown error type)"},
        {{"0x8000025", "0x8004406F"},
         "The file could not be written,  AVIError - Couldn't open file"}};
    for (const auto& [numbers, text] : cases) {
        const Ended ended = vorn(joined({"explain"}, numbers));
        expectDone(ended);
        EXPECT_EQ(ended.out, text + '\n');
    }
}

TEST(CommandLine, SaysWhatIsWrongWithTheHomeDirectory) {
    const ScratchDirectory scratch;
    const Ended ended = vorn({"modules"}, {.environment = {"VORN=" + scratch.path("absent")}});
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_NE(ended.err.find(scratch.path("absent")), std::string::npos) << ended.err;
}

}  // namespace
