// File endings, as capability files list them.
#pragma once

#include <string_view>

namespace vorn {

// Whether the file's name ends in a dot and one of a comma list of endings, in any case.
bool hasEnding(std::string_view fileName, std::string_view endings);

}  // namespace vorn
