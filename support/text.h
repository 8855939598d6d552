// Texts in fixed buffers, and names, which are compared without regard to case.
#pragma once

#include <cstddef>

namespace vorn {

// Copies a text with its NUL. False when it doesn't fit: nothing is written then.
bool copyText(char* out, size_t size, const char* text);

// Writes "directory/name". False when it doesn't fit.
bool joinPath(char* out, size_t size, const char* directory, const char* name);

// Orders by the lower-case forms, as strcmp does. Only the letters A to Z have a lower-case form:
// names mean the same in every locale.
int compareNames(const char* a, const char* b);

inline bool namesEqual(const char* a, const char* b) { return compareNames(a, b) == 0; }

// Whether the text is longer than the ending and ends in it, without regard to case.
bool hasEnding(const char* text, const char* ending);

}  // namespace vorn
