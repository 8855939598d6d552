#include "platform/path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/scratch_home.h"

namespace {

using namespace vorn;

using Resolver = bool (*)(const char*, char*, size_t);

TEST(Path, LastPartIsFoundExactlyFirstThenInAnyCaseAndUnderThisSystemsNames) {
    const ScratchDirectory scratch;
    for (const char* name :
         {"Loaders/PNM", "a", "A", "png", "pnm.exe", "pnm", "gui.so", "other.dll", ".exe"}) {
        scratch.write(name, "");
    }
    const Resolver name = platform::resolveName, program = platform::resolveProgram,
                   library = platform::resolveLibrary;
    const struct {
        Resolver resolve;
        const char *asked, *found;  // "" for none
    } cases[] = {{name, "loaders", "Loaders"},
                 {name, "Loaders/pnm", "Loaders/PNM"},
                 {name, "loaders/PNM", ""},
                 {name, "a", "a"},
                 {name, "A", "A"},
                 {name, "Loader", ""},
                 {program, "png.exe", "png"},
                 {program, "PNG.EXE", "png"},
                 {program, "pnm.exe", "pnm.exe"},
                 {program, "tiff.exe", ""},
                 {program, "png.dll", ""},
                 {library, "gui.dll", "gui.so"},
                 {library, "other.dll", "other.dll"}};
    for (const auto& c : cases) {
        char out[platform::kMaxPath];
        const bool found = c.resolve(scratch.path(c.asked).c_str(), out, sizeof out);
        EXPECT_EQ(found ? out : "", *c.found ? scratch.path(c.found) : "") << c.asked;
    }
    EXPECT_EQ(platform::fileKind(scratch.path("LOADERS").c_str()), platform::FileKind::Directory);
    EXPECT_EQ(platform::fileKind(scratch.path("a").c_str()), platform::FileKind::File);
    EXPECT_EQ(platform::fileKind(scratch.path("b").c_str()), platform::FileKind::Missing);
}

TEST(Path, RelativeNamesLieInTheWorkingDirectory) {
    const ScratchDirectory scratch;
    scratch.write("Errors", "");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(scratch.path());
    char out[32];
    EXPECT_TRUE(platform::resolveName("ERRORS", out, sizeof out));
    EXPECT_STREQ(out, "Errors");
    EXPECT_FALSE(platform::resolveName("ERRORS", out, 6));  // no room for the NUL
    EXPECT_FALSE(platform::resolveName("", out, sizeof out));
    std::filesystem::current_path(before);
}

TEST(Path, LongerThanTheSystemsLongestDoesNotExist) {
    const std::string longest(platform::kMaxPath, 'a');
    char out[platform::kMaxPath];
    for (const Resolver resolve :
         {platform::resolveName, platform::resolveProgram, platform::resolveLibrary}) {
        EXPECT_FALSE(resolve((longest + ".exe").c_str(), out, sizeof out));
        EXPECT_FALSE(resolve((longest.substr(8) + ".dll").c_str(), out, sizeof out));
    }
}

TEST(Path, OfTheProgramIsKnownWhenThereIsRoom) {
    char out[platform::kMaxPath];
    ASSERT_TRUE(platform::programPath(out, sizeof out));
    const std::filesystem::path program = out;
    EXPECT_EQ(program.filename(), "platform_test");
    EXPECT_FALSE(platform::programPath(out, program.string().size()));
    ASSERT_TRUE(platform::libraryDirectory(out, sizeof out));
    EXPECT_EQ(out, program.parent_path());
}

}  // namespace
