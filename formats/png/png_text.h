// Text fields of PNG files. A PNG text has a keyword; VORN's text fields are tags.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace png {

struct TextField {
    uint32_t id;
    const char* keyword;      // written, and looked for first
    const char* alsoKnownAs;  // looked for when there is no text with the keyword, or null
};

inline constexpr size_t kTextFieldCount = 9;
extern const TextField kTextFields[kTextFieldCount];

// PNG's plain texts are Latin-1; VORN hands on UTF-8.
std::string utf8FromLatin1(std::string_view text);

// False when the text is not UTF-8, or has characters beyond Latin-1.
bool latin1FromUtf8(std::string_view text, std::string& latin1);

// At most `bytes` bytes, without cutting a UTF-8 character in two.
void cutUtf8(std::string& text, size_t bytes);

}  // namespace png
