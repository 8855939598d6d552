#include <gtest/gtest.h>

#include "support/memory.h"
#include "tests/tags/tag_builder.h"

namespace {

vorn::Owned<char> text(const VORN_TagItem* item) {
    return vorn::Owned<char>(VORN_L_TagGetString(item));
}

TEST(TagValues, NumbersOfAnotherLengthAreZero) {
    TagBuilder longs, doubles;
    EXPECT_EQ(VORN_L_TagGetDoubleVal(longs.addLong(ITAG_Width, 5).end()), 0.0);
    EXPECT_EQ(VORN_L_TagGetLongVal(doubles.add(ITAG_Aspect, "12345678", 8).end()), 0);
}

TEST(TagValues, StringsAreAlwaysTerminated) {
    TagBuilder whole, cut, empty;
    EXPECT_STREQ(text(whole.addText(ITAG_Artist, "abc").end()).get(), "abc");
    EXPECT_STREQ(text(cut.add(ITAG_Artist, "abcd", 4).end()).get(), "abc");
    EXPECT_STREQ(text(empty.add(ITAG_Artist, nullptr, 0).end()).get(), "");
}

TEST(TagValues, StringListIsOneBlockOfWhatTheItemReallyHolds) {
    using namespace std::string_literals;
    const struct {
        std::string bytes, strings;  // "-" for none
    } items[] = {
        {"\2\0\0\0ab\0cde"s, "ab,cde,"},
        {"\0\0\0\0"s, ""},
        {"", "-"},               // no count
        {"\1\0\0\0"s, "-"},      // no string
        {"\3\0\0\0ab\0"s, "-"},  // the padding is an empty string, the third is missing
        {"\xFF\xFF\xFF\xFF"
         "ab\0"s,
         "-"},                   // a count that no item can hold
        {"\1\0\0\0abcd"s, "-"},  // no NUL
    };
    for (const auto& item : items) {
        TagBuilder builder;
        builder.add(MTAG_Sizes, item.bytes.data(), item.bytes.size())
            .addText(ITAG_Artist, "behind");
        char** list = VORN_L_TagGetStringList(builder.end());
        std::string strings = list ? "" : "-";
        for (char** entry = list; entry && *entry; ++entry) strings += *entry + ","s;
        EXPECT_EQ(strings, item.strings) << &item - items;
        VORN_L_TagFreeData(list);
    }
}

TEST(TagValues, TextIsCopiedCutToTheBuffer) {
    TagBuilder builder;
    const VORN_TagItem* list =
        builder.add(ITAG_Model, "wxyz", 4).addText(ITAG_Artist, "abcdef").end();
    char buffer[8] = "-------";
    EXPECT_EQ(VORN_L_CopyTagStringOrNull(list, ITAG_Artist, buffer, 0), nullptr);
    EXPECT_STREQ(buffer, "-------");
    EXPECT_EQ(VORN_L_CopyTagStringOrNull(list, ITAG_Artist, buffer, 4), buffer);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(VORN_L_CopyTagStringOrNull(list, ITAG_Artist, buffer, 1), buffer);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(VORN_L_CopyTagStringOrNull(list, ITAG_Model, buffer, 8), buffer);
    EXPECT_STREQ(buffer, "wxyz");
    EXPECT_EQ(VORN_L_CopyTagStringOrNull(list, ITAG_Make, buffer, 8), nullptr);
    EXPECT_STREQ(buffer, "");
}

}  // namespace
