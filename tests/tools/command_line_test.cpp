#include "tests/tools/tool.h"

namespace {

TEST(CommandLine, RefusesWrongUsageWithStatus2BeforeAnythingIsDone) {
    const ScratchDirectory scratch;
    const std::string in = scratch.write("in.ppm", anymap("P6", 1, 1, {1, 2, 3}));
    const std::string out = scratch.path("out.ppm");
    std::vector<Arguments> wrong = {{},
                                    {"paint"},
                                    {"info"},
                                    {"info", in, "--nonsense"},
                                    {"info", in, "--loader", "nosuch"},
                                    {"info", in, "--page", "0"},
                                    {"convert", in},
                                    {"explain"},
                                    {"explain", "17", "x"}};
    for (const std::string number : {"seven", "0x", "4294967296"})
        wrong.push_back({"explain", number});
    const std::pair<std::string, std::string> options[] = {
        {"more", "files"},        {"--depth", "12"},      {"--colorspace", "Lab"},
        {"--colorspace", "None"}, {"--saver", "nosuch"},  {"--loader", "nosuch"},
        {"--orientation", "8"},   {"--set", "Artist"},    {"--set", "Width=10"},
        {"--orientation", "-1"},  {"--set", "XDPI=fine"}, {"--size", "5y5"}};
    for (const auto& [option, value] : options)
        wrong.push_back({"convert", in, out, option, value});
    for (const auto& arguments : wrong) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Ended ended = vorn(arguments);
        EXPECT_EQ(ended.status, 2);
        EXPECT_EQ(ended.out, "");
        EXPECT_TRUE(ended.err.starts_with("vorn: ")) << ended.err;
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
