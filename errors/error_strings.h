// The table of error texts: the file "Errors" of the home directory.
//
// A line is a text, or a text, "=" and its number; without a number it has the number of the line
// before and 1 more (0 for the first). Lines end at LF, CR or CR LF; a line of more than 255 bytes
// goes on as the next line. Blanks and tabs at a line's end are dropped. The first text of a number
// counts.
#pragma once

#include <cstdint>
#include <string_view>

#include "support/memory.h"

namespace vorn {

class ErrorStrings {
  public:
    bool isLoaded() const { return entries_ != nullptr; }

    // Stays not loaded when the file is missing or empty or memory is short.
    void load(const char* path);
    void release();

    // The number's text; false when it has none. The text is valid until the table is released.
    bool find(int32_t number, std::string_view& text) const;

  private:
    struct Entry {
        int32_t number;
        uint32_t start;  // in text_
        uint32_t length;
    };

    Owned<char> text_;
    Owned<Entry> entries_;
    size_t count_ = 0;
};

}  // namespace vorn
