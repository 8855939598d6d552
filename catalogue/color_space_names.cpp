// Colour spaces by name.
#include <vorn/library.h>

#include <iterator>

#include "support/text.h"

namespace vorn {
namespace {

// Indexed by number.
constexpr const char* kNames[] = {"None", "Gray", "RGB", "YUV", "YUV601", "CMY", "CMYK", "CMAPPED"};

}  // namespace
}  // namespace vorn

using namespace vorn;

int32_t VORN_L_FindColorSpace(const char* name) {
    for (size_t number = 0; number < std::size(kNames); ++number) {
        if (namesEqual(kNames[number], name)) {
            return static_cast<int32_t>(number);
        }
    }
    return VORN_CS_NONE;
}

VORN_Bool VORN_L_ColorSpaceInList(int32_t colorSpace, char* const* list) {
    if (colorSpace < 0 || static_cast<size_t>(colorSpace) >= std::size(kNames) || list == nullptr) {
        return 0;
    }
    for (; *list != nullptr; ++list) {
        if (namesEqual(*list, kNames[colorSpace])) {
            return 1;
        }
    }
    return 0;
}
