#include "tools/printable.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace vorn::tool {

namespace {

struct Character {
    uint32_t code = 0;
    size_t length = 0;  // 0: no UTF-8
};

unsigned byteAt(std::string_view text, size_t index) {
    return static_cast<unsigned char>(text[index]);
}

size_t sequenceLength(unsigned first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return 2;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return 3;
    }
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

Character decode(std::string_view text) {
    constexpr std::array<unsigned, 5> kFirstMask = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr std::array<uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    const size_t length = sequenceLength(byteAt(text, 0));
    if (length == 0 || length > text.size()) {
        return {};
    }
    uint32_t code = byteAt(text, 0) & kFirstMask[length];
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80) {
            return {};
        }
        code = code << 6 | (byteAt(text, i) & 0x3F);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kSmallest[length] || code > 0x10FFFF || surrogate) {
        return {};
    }
    return {code, length};
}

bool steersTerminal(uint32_t code) {
    const bool control = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool lineEnd = code == 0x2028 || code == 0x2029;
    const bool direction = code == 0x061C || code == 0x200E || code == 0x200F ||
                           (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return control || lineEnd || direction;
}

void appendEscape(std::string& out, const char* format, uint32_t value) {
    std::array<char, 16> escape{};
    std::snprintf(escape.data(), escape.size(), format, value);
    out += escape.data();
}

void appendControl(std::string& out, uint32_t code) {
    switch (code) {
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            appendEscape(out, code < 0x100 ? "\\x%02x" : "\\u%04x", code);
    }
}

}  // namespace

std::string printable(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const Character character = decode(text);
        if (character.length == 0) {
            appendEscape(out, "\\x%02x", byteAt(text, 0));
        } else if (steersTerminal(character.code)) {
            appendControl(out, character.code);
        } else {
            out += text.substr(0, character.length);
        }
        text.remove_prefix(character.length == 0 ? 1 : character.length);
    }
    return out;
}

size_t columns(std::string_view text) {
    size_t count = 0;
    for (const char byte : text) {
        count += (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
    }
    return count;
}

}  // namespace vorn::tool
