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

TEST(Printable, EscapesWhatWouldSteerATerminalAndWhatIsNoUtf8) {
    const std::pair<std::string, const char*> cases[] = {
        {"a\x1b[2Jb\x07", "a\\x1b[2Jb\\x07"},
        {"one\ntwo\r\tthree\x7f", "one\\ntwo\\r\\tthree\\x7f"},
        {std::string("nul\0", 4), "nul\\x00"},
        {"\u009b31m", "\\x9b31m"},            // a control sequence in one character
        {"\u202egpj.exe", "\\u202egpj.exe"},  // text turned round
        {"\xff!", "\\xff!"},
        {"\xc3", "\\xc3"},  // cut short
        {"\xe2\x82", "\\xe2\\x82"},
        {"\xc0\x9b", "\\xc0\\x9b"},  // longer than needed
        {"\xe0\x82\x9b", "\\xe0\\x82\\x9b"},
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"},           // half of a pair
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},  // beyond the last character
    };
    for (const auto& [text, printed] : cases) EXPECT_EQ(printable(text), printed);
}

}  // namespace
