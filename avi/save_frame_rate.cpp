#include <vorn/host.h>

#include <algorithm>
#include <cstring>

#include "avi/preferences.h"
#include "support/text.h"

namespace vorn {
namespace {

constexpr size_t kMostName = 31;
constexpr char kAvi[] = "AVI";

// The name under which the saver keeps its parameters.
void parameterName(const char* saver, char (&out)[kMostName + 1]) {
    const size_t length = std::min(std::strcspn(saver, "."), kMostName);
    std::memcpy(out, saver, length);
    out[length] = '\0';
    if (namesEqual(out, "AVI16") || namesEqual(out, "AVI32")) {
        out[sizeof kAvi - 1] = '\0';
    }
}

int32_t aviFrameRate(const char* text) {
    AviOptions options{};
    int32_t rate = kDefaultFrameRate;
    readAviPreferences(text, options, rate);
    releaseAviBlocks(options);
    return rate;
}

int32_t plainFrameRate(const char* text) {
    constexpr char kKeyword[] = "FrameRate=";
    constexpr size_t kLength = sizeof kKeyword - 1;
    int64_t rate = 0;
    if (std::strncmp(text, kKeyword, kLength) != 0) {
        return kDefaultFrameRate;
    }
    text += kLength;
    return readNumber(text, 10, rate) ? static_cast<int32_t>(rate) : kDefaultFrameRate;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

double VORN_H_GetSaveFrameRate(const char* saverName) {
    if (saverName == nullptr) {
        return kDefaultFrameRate;
    }
    char name[kMostName + 1];
    parameterName(saverName, name);
    char* text = VORN_H_ModuleGetParameters(name, VORN_SAVER);
    if (text == nullptr) {
        return kDefaultFrameRate;
    }
    const int32_t rate = namesEqual(name, kAvi) ? aviFrameRate(text) : plainFrameRate(text);
    VORN_H_ModuleFreeParameters(text);
    return rate;
}
