#include "unv/file_ending.h"

#include <algorithm>
#include <cctype>

namespace vorn {
namespace {

bool sameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

bool sameWord(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), sameLetter);
}

}  // namespace

bool hasEnding(std::string_view fileName, std::string_view endings) {
    const size_t dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot + 1 == fileName.size()) return false;
    const std::string_view ending = fileName.substr(dot + 1);
    while (!endings.empty()) {
        const size_t comma = std::min(endings.find(','), endings.size());
        if (sameWord(endings.substr(0, comma), ending)) return true;
        endings.remove_prefix(std::min(comma + 1, endings.size()));
    }
    return false;
}

}  // namespace vorn
