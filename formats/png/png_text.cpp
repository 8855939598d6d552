#include "formats/png/png_text.h"

#include <vorn/tags.h>

namespace png {
namespace {

constexpr unsigned kLargestAscii = 0x7F;
constexpr unsigned kLargestLatin1 = 0xFF;

constexpr bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) >> 6) == 2; }

}  // namespace

const TextField kTextFields[kTextFieldCount] = {
    {ITAG_Artist, "Author", "Artist"},
    {ITAG_DateTime, "Creation Time", nullptr},
    {ITAG_HostComputer, "HostComputer", nullptr},
    {ITAG_Description, "Description", "Comment"},
    {ITAG_Make, "Make", nullptr},
    {ITAG_Model, "Model", "Source"},
    {ITAG_Software, "Software", nullptr},
    {ITAG_DocumentName, "Title", nullptr},
    {ITAG_PageName, "PageName", nullptr},
};

std::string utf8FromLatin1(std::string_view text) {
    std::string utf8;
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code <= kLargestAscii) {
            utf8.push_back(c);
        } else {
            utf8.push_back(static_cast<char>(0xC0 | code >> 6));
            utf8.push_back(static_cast<char>(0x80 | (code & 0x3F)));
        }
    }
    return utf8;
}

bool latin1FromUtf8(std::string_view text, std::string& latin1) {
    latin1.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        unsigned code = static_cast<unsigned char>(text[i]);
        if (code > kLargestAscii) {
            if (code >> 5 != 6 || i + 1 == text.size() || !isContinuation(text[i + 1]))
                return false;
            code = (code & 0x1F) << 6 | (static_cast<unsigned char>(text[++i]) & 0x3F);
            if (code <= kLargestAscii || code > kLargestLatin1) return false;
        }
        latin1.push_back(static_cast<char>(code));
    }
    return true;
}

void cutUtf8(std::string& text, size_t bytes) {
    if (text.size() <= bytes) return;
    while (bytes > 0 && isContinuation(text[bytes])) --bytes;
    text.resize(bytes);
}

}  // namespace png
