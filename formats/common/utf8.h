// Texts of files, which may be in other encodings, and VORN's, which are UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace formats {

// All text fields together fit the area in which a description travels.
inline constexpr size_t kLongestText = 4096;

std::string utf8FromLatin1(std::string_view text);

// False when the text is not UTF-8, or has characters beyond Latin-1.
bool latin1FromUtf8(std::string_view text, std::string& latin1);

bool isUtf8(std::string_view text);

// For formats that name no encoding: what is UTF-8 is taken as that, anything else as Latin-1. At
// most kLongestText bytes, without blanks at its end.
std::string utf8FromUnknown(std::string_view text);

// At most `bytes` bytes, without cutting a UTF-8 character in two.
void cutUtf8(std::string& text, size_t bytes);

}  // namespace formats
