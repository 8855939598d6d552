#include "platform/path.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/scratch_home.h"

namespace {

using namespace vorn;

using Resolver = bool (*)(const char*, char*, size_t);

// What a resolver makes of a path in the directory, without the directory; "none" for a failure.
std::string resolved(const ScratchDirectory& directory, Resolver resolve, const std::string& name) {
    char out[platform::kMaxPath];
    const std::string path = directory.path(name);
    if (!resolve(path.c_str(), out, sizeof out)) return "none";
    return std::string(out).substr(directory.path().size() + 1);
}

TEST(Path, LastPartIsFoundExactlyFirstAndThenInAnyCase) {
    const ScratchDirectory scratch;
    scratch.write("Loaders/PNM", "");
    scratch.write("a", "");
    scratch.write("A", "");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "loaders"), "Loaders");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "Loaders/pnm"), "Loaders/PNM");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "loaders/PNM"), "none");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "a"), "a");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "A"), "A");
    EXPECT_EQ(resolved(scratch, platform::resolveName, "Loader"), "none");
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

TEST(Path, ProgramsAndLibrariesAreFoundUnderThisSystemsNames) {
    const ScratchDirectory scratch;
    for (const char* name : {"png", "pnm.exe", "pnm", "gui.so", "other.dll", ".exe"}) {
        scratch.write(name, "");
    }
    EXPECT_EQ(resolved(scratch, platform::resolveProgram, "png.exe"), "png");
    EXPECT_EQ(resolved(scratch, platform::resolveProgram, "PNG.EXE"), "png");
    EXPECT_EQ(resolved(scratch, platform::resolveProgram, "pnm.exe"), "pnm.exe");
    EXPECT_EQ(resolved(scratch, platform::resolveProgram, "tiff.exe"), "none");
    EXPECT_EQ(resolved(scratch, platform::resolveProgram, "png.dll"), "none");
    EXPECT_EQ(resolved(scratch, platform::resolveLibrary, "gui.dll"), "gui.so");
    EXPECT_EQ(resolved(scratch, platform::resolveLibrary, "other.dll"), "other.dll");
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
