// The words of a variable-argument call as a user tag list. A Va form gathers them and calls its
// pointer form:
//
//     va_list arguments;
//     va_start(arguments, image);
//     const GatheredWords words(arguments);
//     va_end(arguments);
//     if (words.data() == nullptr) ... (memory is short)
//
// Each id is read as `unsigned` and each value as one VORN_Word.
#pragma once

#include <vorn/tags.h>

#include <cstdarg>

#include "support/memory.h"

namespace vorn {

class GatheredWords {
  public:
    explicit GatheredWords(va_list arguments);

    // For functions whose first id is a named argument; data() begins with it.
    GatheredWords(uint32_t first, va_list arguments);

    GatheredWords(const GatheredWords&) = delete;
    GatheredWords& operator=(const GatheredWords&) = delete;

    // The first id's word, or null when memory was short.
    const VORN_Word* data() const { return words_; }

    // The words behind the first id (null as above).
    const VORN_Word* rest() const { return words_ == nullptr ? nullptr : words_ + 1; }

  private:
    void gather(uint32_t first, va_list arguments);
    bool append(VORN_Word word);

    static constexpr size_t kInlineWords = 65;

    VORN_Word inline_[kInlineWords];
    Owned<VORN_Word> grown_;
    VORN_Word* words_ = inline_;
    size_t count_ = 0;
    size_t capacity_ = kInlineWords;
};

}  // namespace vorn
