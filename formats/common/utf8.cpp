#include "formats/common/utf8.h"

namespace formats {
namespace {

constexpr unsigned kLargestAscii = 0x7F;
constexpr unsigned kLargestLatin1 = 0xFF;

constexpr bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) >> 6) == 2; }

}  // namespace

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

bool isUtf8(std::string_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first <= kLargestAscii) continue;
        const int following = first >> 5 == 6 ? 1 : first >> 4 == 14 ? 2 : first >> 3 == 30 ? 3 : 0;
        if (following == 0) return false;
        for (int k = 0; k < following; ++k) {
            if (++i == text.size() || !isContinuation(text[i])) return false;
        }
    }
    return true;
}

std::string utf8FromUnknown(std::string_view text) {
    const size_t last = text.find_last_not_of(" \t\r\n");
    text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
    std::string utf8 = isUtf8(text) ? std::string(text) : utf8FromLatin1(text);
    cutUtf8(utf8, kLongestText);
    return utf8;
}

void cutUtf8(std::string& text, size_t bytes) {
    if (text.size() <= bytes) return;
    while (bytes > 0 && isContinuation(text[bytes])) --bytes;
    text.resize(bytes);
}

}  // namespace formats
