// Texts in fixed buffers, and names, which are compared without regard to case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vorn {

// Copies a text with its NUL. False when it doesn't fit: nothing is written then.
bool copyText(char* out, size_t size, const char* text);

// Adds to the text in a buffer. False when it doesn't fit: nothing is written then.
bool appendText(char* text, size_t size, const char* addition);

// Writes "directory/name". False when it doesn't fit.
bool joinPath(char* out, size_t size, const char* directory, const char* name);

// Orders by the lower-case forms, as strcmp does. Only the letters A to Z have a lower-case form:
// names mean the same in every locale.
int compareNames(std::string_view a, std::string_view b);

inline bool namesEqual(std::string_view a, std::string_view b) { return compareNames(a, b) == 0; }

// Whether the text is longer than the ending and ends in it, without regard to case.
bool hasEnding(std::string_view text, std::string_view ending);

// Blanks, tabs and line ends, in every locale.
inline constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
std::string_view trimFront(std::string_view text);
std::string_view trim(std::string_view text);

// The whole number at the front of a text, behind white space: 0 when there is none, the nearest
// number when it is beyond 32 bits.
int32_t leadingNumber(std::string_view text);

// The same for a part of a text: takes the number off the front. False when there is none.
bool takeNumber(std::string_view& text, int32_t& number);

}  // namespace vorn
