#include "tools/failure.h"

#include <vorn/host.h>

#include <cstdio>

#include "tools/printable.h"

namespace vorn::tool {

std::string errorText(int32_t code, int32_t subcode) {
    std::string text = VORN_H_ImageGetErrorString(code, subcode);
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    return text;
}

Failure numberedFailure(const std::string& file, int32_t code, int32_t subcode) {
    return {file, errorText(code, subcode), code, subcode};
}

Failure libraryFailure(const std::string& file, VORN_Image* image) {
    const VORN_ErrorPair pair = VORN_H_ImageGetError(image);
    const int32_t code = VORN_ErrorPairCode(pair);
    if (code == 0) {
        return {file, "The module gave no reason", 0, 0};
    }
    return numberedFailure(file, code, VORN_ErrorPairSubcode(pair));
}

void printFailure(const Failure& failure) {
    // A code with type bits is written the way in which its two parts can be seen.
    const bool plain = failure.code >= 0 && failure.code < 0x1000000;
    std::fprintf(stderr, plain ? "vorn: %s: %s (%d, %d)\n" : "vorn: %s: %s (0x%x, %d)\n",
                 printable(failure.file).c_str(), printable(failure.text).c_str(), failure.code,
                 failure.subcode);
}

}  // namespace vorn::tool
