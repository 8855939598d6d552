#include "platform/system_text.h"

#include <atomic>
#include <cstdio>
#include <cstring>

namespace vorn::platform {
namespace {

void writeToStandardError(VORN_Word, const char* text, const char* caption) {
    if (caption)
        std::fprintf(stderr, "%s: %s\n", caption, text);
    else
        std::fprintf(stderr, "%s\n", text);
}

// What shows messages is a property of the process, like its windows.
std::atomic<VORN_MessageHandler> messageHandler{&writeToStandardError};

}  // namespace

bool systemErrorText(int32_t number, char* buffer, size_t size) {
    const char* text = ::strerrordesc_np(number);
    if (!text || size == 0) return false;
    std::snprintf(buffer, size, "%s", text);
    return true;
}

void runtimeErrorText(int32_t number, char* buffer, size_t size) {
    if (!systemErrorText(number, buffer, size))
        std::snprintf(buffer, size, "Unknown error %d", number);
}

void messageBox(VORN_Word parentWindow, const char* text, const char* caption) {
    messageHandler.load()(parentWindow, text, caption);
}

void setMessageHandler(VORN_MessageHandler handler) {
    messageHandler.store(handler ? handler : &writeToStandardError);
}

}  // namespace vorn::platform
