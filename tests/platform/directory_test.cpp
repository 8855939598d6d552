#include "platform/directory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <string>

#include "tests/scratch_home.h"

namespace {

TEST(Directory, ListsEveryEntryWithItsKind) {
    const ScratchDirectory scratch;
    scratch.write("file", "");
    scratch.makeDirectory("directory");
    std::filesystem::create_symlink("directory", scratch.path("link"));
    std::filesystem::create_symlink("nowhere", scratch.path("broken"));
    vorn::platform::DirectoryListing listing;
    int32_t error = -1;
    ASSERT_TRUE(listing.open(scratch.path().c_str(), error));
    EXPECT_EQ(error, 0);
    std::map<std::string, bool> entries;
    bool isDirectory = false;
    while (const char* name = listing.next(isDirectory)) entries[name] = isDirectory;
    const std::map<std::string, bool> expected = {
        {".", true},         {"..", true},    {"broken", false},
        {"directory", true}, {"file", false}, {"link", true},
    };
    EXPECT_EQ(entries, expected);
}

TEST(Directory, ThatCannotBeListedSaysWhy) {
    const ScratchDirectory scratch;
    vorn::platform::DirectoryListing listing;
    int32_t error = 0;
    EXPECT_FALSE(listing.open(scratch.path("missing").c_str(), error));
    EXPECT_EQ(error, ENOENT);
    EXPECT_FALSE(listing.open(scratch.write("file", "").c_str(), error));
    EXPECT_EQ(error, ENOTDIR);
    bool isDirectory = false;
    EXPECT_EQ(listing.next(isDirectory), nullptr);
}

}  // namespace
