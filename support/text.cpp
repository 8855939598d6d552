#include "support/text.h"

#include <cstdio>
#include <cstring>

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

bool joinPath(char* out, size_t size, const char* directory, const char* name) {
    const int length = std::snprintf(out, size, "%s%c%s", directory, platform::kSeparator, name);
    return length >= 0 && static_cast<size_t>(length) < size;
}

int compareNames(const char* a, const char* b) {
    while (*a != '\0' && lowerCase(*a) == lowerCase(*b)) {
        ++a;
        ++b;
    }
    return lowerCase(*a) - lowerCase(*b);
}

bool hasEnding(const char* text, const char* ending) {
    const size_t length = std::strlen(text);
    const size_t cut = std::strlen(ending);
    return length > cut && namesEqual(text + length - cut, ending);
}

}  // namespace vorn
