#include "support/text.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "platform/path.h"

namespace vorn {
namespace {

int lowerCase(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return code >= 'A' && code <= 'Z' ? code - 'A' + 'a' : code;
}

}  // namespace

bool copyText(char* out, size_t size, const char* text) {
    const size_t length = std::strlen(text);
    if (length >= size) {
        return false;
    }
    std::memcpy(out, text, length + 1);
    return true;
}

bool appendText(char* text, size_t size, const char* addition) {
    const size_t length = std::strlen(text);
    return copyText(text + length, size - length, addition);
}

bool joinPath(char* out, size_t size, const char* directory, const char* name) {
    const int length = std::snprintf(out, size, "%s%c%s", directory, platform::kSeparator, name);
    return length >= 0 && static_cast<size_t>(length) < size;
}

int compareNames(std::string_view a, std::string_view b) {
    const size_t common = std::min(a.size(), b.size());
    for (size_t i = 0; i < common; ++i) {
        if (lowerCase(a[i]) != lowerCase(b[i])) {
            return lowerCase(a[i]) - lowerCase(b[i]);
        }
    }
    return static_cast<int>(a.size() > common) - static_cast<int>(b.size() > common);
}

bool hasEnding(std::string_view text, std::string_view ending) {
    return text.size() > ending.size() &&
           namesEqual(text.substr(text.size() - ending.size()), ending);
}

std::string_view trimFront(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    return text;
}

std::string_view trim(std::string_view text) {
    text = trimFront(text);
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

bool takeNumber(std::string_view& text, int32_t& number) {
    std::string_view rest = trimFront(text);
    const bool hasSign = rest.starts_with('-') || rest.starts_with('+');
    const bool isNegative = rest.starts_with('-');
    rest.remove_prefix(hasSign ? 1 : 0);
    const size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
    if (digits == 0) {
        return false;
    }
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    int64_t value = 0;
    for (const char digit : rest.substr(0, digits)) {
        value = std::min(value * 10 + (digit - '0'), kMost + 1);
    }
    number = static_cast<int32_t>(isNegative ? -value : std::min(value, kMost));
    rest.remove_prefix(digits);
    text = rest;
    return true;
}

int32_t leadingNumber(std::string_view text) {
    int32_t number = 0;
    return takeNumber(text, number) ? number : 0;
}

}  // namespace vorn
