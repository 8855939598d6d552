#include "tests/tools/tool.h"

namespace {

json named(const json& modules, const std::string& name) {
    for (const json& module : modules) {
        if (module["name"] == name) return module;
    }
    return nullptr;
}

TEST(Modules, ListsWhatIsShippedAsJson) {
    const json all = shownAsJson({"modules"});
    const json saver = named(all["savers"], "pnm");
    ASSERT_TRUE(saver.is_object()) << all;
    EXPECT_EQ(saver["colorSpaces"], json({"RGB", "Gray"}));
    EXPECT_EQ(saver["extensions"], json({"pnm", "pbm", "pgm", "ppm", "pam"}));
    EXPECT_EQ(saver["alpha"], true);
    EXPECT_TRUE(named(all["loaders"], "pnm").is_object());
    EXPECT_EQ(all["home"], VORN_BUILT_HOME);
}

// A program that can't even be executed is listed like any other: nothing is started.
TEST(Modules, DescribesModulesByTheirCapabilityFilesAlone) {
    const ScratchHome home;
    home.write("Loaders/thing.exe", "");
    home.write("Loaders/thing.cap",
               "LongModuleName=A\x1b[31m thing\nExtension=.TNG\nAnimation=true\n");
    home.write("Loaders/plain", "");
    home.write("Savers/dots", "");
    home.write("Savers/dots.cap", "Extensions=dot, dots\nExtension=d\nColorSpaces=CMAPPED\n");
    const Ended ended = vorn({"modules"});
    expectDone(ended);
    EXPECT_EQ(ended.out, "Loaders in " + home.path("Loaders") +
                             "\n"
                             "  plain                        RGB  8 bit  no capability file\n"
                             "  thing  A\\x1b[31m thing  tng  RGB  8 bit  animation\n"
                             "\n"
                             "Savers in " +
                             home.path("Savers") +
                             "\n"
                             "  dots    dot dots  CMAPPED  8 bit\n");
}

TEST(Modules, FailsWhereNoneAreInstalled) {
    const ScratchHome home;
    const Ended ended = vorn({"modules"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.ends_with("(52, 0)\n")) << ended.err;
}

}  // namespace
