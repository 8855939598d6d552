// Texts of the video result codes that the system doesn't know.
#pragma once

#include <cstdint>

namespace vorn {

// The text of a result code, or null.
const char* mediaErrorText(int32_t code);

}  // namespace vorn
