// Readable texts of error pairs.
#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <cstdio>

#include "config/home_directory.h"
#include "errors/error_numbers.h"
#include "errors/error_state.h"
#include "errors/media_errors.h"
#include "platform/path.h"
#include "platform/system_text.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

constexpr int32_t kTypeBits = 0x0F000000;
constexpr size_t kMostOfText = 100;
constexpr int kMostOfDescription = 80;

// What is known about a subcode, or null.
const char* describe(int32_t code, int32_t subcode, char* buffer, size_t size) {
    if (subcode == 0) {
        return nullptr;
    }
    if ((code & kTypeBits) != kSystemErrorType) {
        platform::runtimeErrorText(subcode, buffer, size);
        return buffer;
    }
    return platform::systemErrorText(subcode, buffer, size) ? buffer : mediaErrorText(subcode);
}

const char* builtInText(int32_t number) {
    switch (number) {
        case kErrorOpenFile:
            return "Could Not Open File";
        case kErrorListDirectory:
            return "Could not open directory";
        case kErrorNoModules:
            return "Directory is Empty";
        default:
            return nullptr;
    }
}

template <size_t size>
void writeText(char (&out)[size], std::string_view text, const char* description) {
    const auto length = static_cast<int>(std::min(text.size(), kMostOfText));
    if (description == nullptr) {
        std::snprintf(out, size, "%.*s", length, text.data());
    } else {
        std::snprintf(out, size, "%.*s,  %.*s", length, text.data(), kMostOfDescription,
                      description);
    }
}

template <size_t size>
void writeWithoutText(char (&out)[size], int32_t number, int32_t subcode, bool isLoaded) {
    if (const char* text = builtInText(number)) {
        std::snprintf(out, size, "%s", text);
    } else {
        std::snprintf(out, size, "Code #%d,%d (%s)", number, subcode,
                      isLoaded ? "Unknown error type" : "Couldn't read Errors file");
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

void VORN_L_ReadErrorStrings(void) {
    char path[platform::kMaxPath];
    if (joinPath(path, sizeof path, GetHomeDirectory(), "Errors")) {
        threadState<ErrorState>().strings.load(path);
    }
}

void VORN_L_FreeErrorStrings(void) { threadState<ErrorState>().strings.release(); }

const char* VORN_H_ImageGetErrorString(int32_t code, int32_t subcode) {
    ErrorState& state = threadState<ErrorState>();
    if (!state.strings.isLoaded()) {
        VORN_L_ReadErrorStrings();
    }
    const int32_t number = code & ~kTypeBits;
    std::string_view text;
    if (state.strings.find(number, text)) {
        char description[256];
        writeText(state.message, text, describe(code, subcode, description, sizeof description));
    } else {
        writeWithoutText(state.message, number, subcode, state.strings.isLoaded());
    }
    state.debug[0] = state.debug[1] = 0;
    return state.message;
}
