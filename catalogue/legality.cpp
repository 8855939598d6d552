// Lists of sizes and depths that a module handles.
#include <vorn/library.h>

#include <string_view>

#include "support/text.h"

namespace vorn {
namespace {

struct SizeRange {
    int32_t minWidth = 0;
    int32_t minHeight = 0;
    int32_t maxWidth = 0;
    int32_t maxHeight = 0;
};

bool takeLetter(std::string_view& text, char letter) {
    if (!text.starts_with(letter)) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// "1x1-640x480"
bool readSizeRange(std::string_view text, SizeRange& range) {
    return takeNumber(text, range.minWidth) && takeLetter(text, 'x') &&
           takeNumber(text, range.minHeight) && takeLetter(text, '-') &&
           takeNumber(text, range.maxWidth) && takeLetter(text, 'x') &&
           takeNumber(text, range.maxHeight);
}

// "8" or "1-8". False when the text is neither.
bool readDepthRange(std::string_view text, int32_t& least, int32_t& most) {
    if (!takeNumber(text, least)) {
        return false;
    }
    if (!takeLetter(text, '-') || !takeNumber(text, most)) {
        most = least;
    }
    return true;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_Bool VORN_L_CheckSizeLegality(char* const* sizes, int32_t width, int32_t height) {
    if (sizes == nullptr) {
        return 1;
    }
    for (; *sizes != nullptr; ++sizes) {
        SizeRange range;
        if (readSizeRange(*sizes, range) && range.minWidth <= width && width <= range.maxWidth &&
            range.minHeight <= height && height <= range.maxHeight) {
            return 1;
        }
    }
    return 0;
}

VORN_Bool VORN_L_CheckDepthLegality(char* const* depths, int32_t depth) {
    if (depths == nullptr) {
        return 1;
    }
    for (; *depths != nullptr; ++depths) {
        int32_t least = 0;
        int32_t most = 0;
        if (readDepthRange(*depths, least, most) && least <= depth && depth <= most) {
            return 1;
        }
    }
    return 0;
}

int32_t VORN_L_GetMaxDepth(char* const* depths) {
    if (depths == nullptr) {
        return 8;
    }
    int32_t deepest = 1;
    for (; *depths != nullptr; ++depths) {
        int32_t least = 0;
        int32_t most = 0;
        if (readDepthRange(*depths, least, most) && most > deepest) {
            deepest = most;
        }
    }
    return deepest;
}
