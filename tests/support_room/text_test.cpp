#include "support/text.h"

#include <gtest/gtest.h>

#include <string>

#include "support/text_file.h"
#include "tests/scratch_home.h"
#include "tests/support/failing_memory.h"

namespace {

using namespace vorn;

TEST(Text, IsWrittenWholeOrNotAtAll) {
    char out[6] = "kept";
    EXPECT_FALSE(copyText(out, sizeof out, "longer"));
    EXPECT_STREQ(out, "kept");
    EXPECT_TRUE(copyText(out, sizeof out, "exact"));
    EXPECT_STREQ(out, "exact");
    EXPECT_FALSE(copyText(out, 0, ""));
    EXPECT_TRUE(joinPath(out, sizeof out, "a", "bcd"));
    EXPECT_STREQ(out, "a/bcd");
    EXPECT_FALSE(joinPath(out, sizeof out, "a", "bcde"));
}

TEST(Names, AreOrderedWithoutRegardToCase) {
    EXPECT_TRUE(namesEqual("CMAPPED", "cMapped"));
    EXPECT_FALSE(namesEqual("CMY", "CMYK"));
    EXPECT_LT(compareNames("", "a"), 0);
    EXPECT_LT(compareNames("PNG", "pnm"), 0);
    EXPECT_GT(compareNames("z", "A"), 0);
    EXPECT_LT(compareNames("_", "a"), 0);  // lower-case forms count: '_' lies between the cases
    EXPECT_LT(compareNames("a", "\xC4"), 0);
    EXPECT_FALSE(namesEqual("\xC4", "\xE4"));
}

TEST(Names, EndInAnEndingOnlyWhenSomethingStandsBeforeIt) {
    EXPECT_TRUE(hasEnding("a.CAP", ".cap"));
    EXPECT_FALSE(hasEnding(".cap", ".cap"));
    EXPECT_FALSE(hasEnding("ap", ".cap"));
    EXPECT_FALSE(hasEnding("a.cap2", ".cap"));
}

TEST(TextFile, IsReadWhole) {
    const ScratchDirectory scratch;
    const std::string big(200'000, 'b');
    for (const std::string& text : {std::string(), std::string("a\0b\r\n", 5), big}) {
        const std::string path = scratch.write("text", text);
        size_t length = 77;
        const Owned<char> read = readTextFile(path.c_str(), length);
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(std::string(read.get(), length), text);
        EXPECT_EQ(read.get()[length], '\0');
    }
    size_t length = 0;
    EXPECT_EQ(readTextFile(scratch.path("missing").c_str(), length), nullptr);
    EXPECT_EQ(readTextFile(scratch.path().c_str(), length), nullptr);
    failAtEachAllocation([&](auto withFailure) {
        const auto [read, failed] = withFailure(
            [&] { return readTextFile(scratch.path("text").c_str(), length) != nullptr; });
        EXPECT_EQ(read, !failed);
    });
}

}  // namespace
