#include "tools/printable.h"

#include <gtest/gtest.h>

namespace {

using vorn::tool::columns;
using vorn::tool::printable;

TEST(Printable, KeepsTextOfAllLanguages) {
    const std::string text = "Zürich, 東京, 🏔 - \"a\\b\"";
    EXPECT_EQ(printable(text), text);
    EXPECT_EQ(columns("Zürich"), 6U);
}

TEST(Printable, EscapesWhatWouldSteerATerminal) {
    EXPECT_EQ(printable("a\x1b[2Jb\x07"), "a\\x1b[2Jb\\x07");
    EXPECT_EQ(printable("one\ntwo\r\tthree\x7f"), "one\\ntwo\\r\\tthree\\x7f");
    EXPECT_EQ(printable(std::string("nul\0", 4)), "nul\\x00");
    EXPECT_EQ(printable("\xc2\x9b"
                        "31m"),
              "\\x9b31m")
        << "a control sequence in one character";
    EXPECT_EQ(printable("\xe2\x80\xae"
                        "gpj.exe"),
              "\\u202egpj.exe")
        << "text turned round";
}

TEST(Printable, EscapesBytesThatAreNoUtf8) {
    EXPECT_EQ(printable("\xff"
                        "a"),
              "\\xffa");
    EXPECT_EQ(printable("\xc3"), "\\xc3") << "cut short";
    EXPECT_EQ(printable("\xe2\x82"), "\\xe2\\x82");
    EXPECT_EQ(printable("\xc0\x9b"), "\\xc0\\x9b") << "longer than needed";
    EXPECT_EQ(printable("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "half of a pair";
    EXPECT_EQ(printable("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "beyond the last character";
}

}  // namespace
