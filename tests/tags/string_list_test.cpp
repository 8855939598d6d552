#include "tests/support/string_list.h"

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include "tests/support/failing_memory.h"

namespace {

Strings fields(const std::string& text) { return taken(VORN_L_StringToStringList(text.c_str())); }

TEST(StringList, TextIsSplitAtCommas) {
    EXPECT_EQ(fields("RGB,CMYK,Gray"), (Strings{"RGB", "CMYK", "Gray"}));
    EXPECT_EQ(fields("RGB"), (Strings{"RGB"}));
    EXPECT_EQ(fields(" a ,b,"), (Strings{" a ", "b"}));
    EXPECT_EQ(fields(",a,,b"), (Strings{"", "a", "", "b"}));
    EXPECT_EQ(VORN_L_StringToStringList(""), nullptr);
}

TEST(StringList, TextBeyondTheLimitsIsRefused) {
    EXPECT_EQ(fields(std::string(32766, ',') + "x").size(), 32767u);
    EXPECT_EQ(VORN_L_StringToStringList((std::string(32767, ',') + "x").c_str()), nullptr);
    EXPECT_EQ(fields("a," + std::string(32767, 'b')).size(), 2u);
    EXPECT_EQ(VORN_L_StringToStringList(("a," + std::string(32768, 'b')).c_str()), nullptr);
}

TEST(StringList, CopiesItsStrings) {
    char first[] = "one";
    const char* const strings[] = {first, "two"};
    char** list = VORN_H_CreateStringList(strings, 2);
    first[0] = 'X';
    EXPECT_EQ(taken(list), (Strings{"one", "two"}));
    char** empty = VORN_H_CreateStringList(nullptr, 0);
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(taken(empty), Strings());
}

// The leak checker sees what a failure leaves behind.
TEST(StringList, FailsAsAWholeWhenMemoryIsShort) {
    const char* const strings[] = {"one", "two"};
    failAtEachAllocation([&](auto run) {
        const auto [list, failed] = run([&] { return taken(VORN_H_CreateStringList(strings, 2)); });
        EXPECT_EQ(list.empty(), failed);
    });
    failAtEachAllocation([](auto run) {
        const auto [list, failed] = run([] { return fields("one,two"); });
        EXPECT_EQ(list.empty(), failed);
    });
}

}  // namespace
