// Text that came out of a file, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace vorn::tool {

// The text with everything that could steer a terminal or turn its lines round written as an
// escape: control characters, bytes that are no UTF-8, and the invisible direction marks. Printable
// UTF-8 stays as it is.
std::string printable(std::string_view text);

// Columns that a printable text takes (a character each, combining marks not considered).
size_t columns(std::string_view text);

}  // namespace vorn::tool
