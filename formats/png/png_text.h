// Text fields of PNG files. A PNG text has a keyword; VORN's text fields are tags.
#pragma once

#include <cstddef>
#include <cstdint>

#include "formats/common/utf8.h"

namespace png {

struct TextField {
    uint32_t id;
    const char* keyword;      // written, and looked for first
    const char* alsoKnownAs;  // looked for when there is no text with the keyword, or null
};

inline constexpr size_t kTextFieldCount = 9;
extern const TextField kTextFields[kTextFieldCount];

// PNG's plain texts are Latin-1; VORN hands on UTF-8.
using formats::cutUtf8;
using formats::latin1FromUtf8;
using formats::utf8FromLatin1;

}  // namespace png
