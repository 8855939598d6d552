// Small text files.
#pragma once

#include "support/memory.h"

namespace vorn {

// The whole file as a text that ends with a NUL; `length` doesn't count it. Null when the file
// can't be read or memory is short.
Owned<char> readTextFile(const char* path, size_t& length);

}  // namespace vorn
