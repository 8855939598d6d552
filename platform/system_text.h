// Texts of system errors, and message boxes.
#pragma once

#include <vorn/host.h>

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

// The system's description of an error number. False when it knows none.
bool systemErrorText(int32_t number, char* buffer, size_t size);

// The C runtime's description of an errno value; always a text.
void runtimeErrorText(int32_t number, char* buffer, size_t size);

// Hands a message to the handler that the process has set; the default writes it to standard error.
void messageBox(VORN_Word parentWindow, const char* text, const char* caption);
void setMessageHandler(VORN_MessageHandler handler);

}  // namespace vorn::platform
