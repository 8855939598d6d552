#include "formats/png/png_text.h"

#include <gtest/gtest.h>

namespace {

TEST(PngText, TurnsLatin1IntoUtf8AndBack) {
    std::string all;
    for (int code = 1; code < 256; ++code) all.push_back(static_cast<char>(code));
    std::string back;
    ASSERT_TRUE(png::latin1FromUtf8(png::utf8FromLatin1(all), back));
    EXPECT_EQ(back, all);
    for (const char* beyond :
         {"\xE7\x8C\xAB", "\xC4\x80", "\xC0\x80", "\xC3", "\xC3x", "\xFF", "\x80"})
        EXPECT_FALSE(png::latin1FromUtf8(beyond, back)) << beyond;
}

TEST(PngText, CutsBetweenCharacters) {
    std::string text = "a\xC3\xA9\xE7\x8C\xAB";
    png::cutUtf8(text, 6);
    EXPECT_EQ(text, "a\xC3\xA9\xE7\x8C\xAB");
    png::cutUtf8(text, 5);
    EXPECT_EQ(text, "a\xC3\xA9");
    png::cutUtf8(text, 2);
    EXPECT_EQ(text, "a");
    png::cutUtf8(text, 0);
    EXPECT_EQ(text, "");
}

}  // namespace
