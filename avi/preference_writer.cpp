#include <cstdio>

#include "avi/preferences.h"

namespace vorn {
namespace {

// Marks, the terminator and some room.
constexpr uint64_t kBesideHeaderAndDigits = 10;

char* writeBlock(char* out, const uint8_t* bytes, uint32_t count) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    *out++ = '<';
    for (uint32_t i = 0; i < count; ++i) {
        *out++ = kDigits[bytes[i] >> 4];
        *out++ = kDigits[bytes[i] & 15];
    }
    *out++ = '>';
    return out;
}

}  // namespace

const char* writeAviPreferences(const AviOptions& options, int32_t frameRate) {
    static char buffer[kMostPreferenceBytes];
    const uint32_t formatBytes = options.lpFormat != nullptr ? options.cbFormat : 0;
    const uint32_t parmsBytes = options.lpParms != nullptr ? options.cbParms : 0;
    const int header = std::snprintf(
        buffer, sizeof buffer, "VORN_AVI_1=x%x:x%x:%d:%d:%d:x%x:%d:%d:%d:%d:%d", options.fccType,
        options.fccHandler, static_cast<int32_t>(options.dwKeyFrameEvery),
        static_cast<int32_t>(options.dwQuality), static_cast<int32_t>(options.dwBytesPerSecond),
        options.dwFlags, static_cast<int32_t>(formatBytes), static_cast<int32_t>(parmsBytes),
        static_cast<int32_t>(options.dwInterleaveEvery), frameRate, kPreferenceCheck);
    const uint64_t digits = 2 * (uint64_t{formatBytes} + parmsBytes);
    if (header < 1 ||
        static_cast<uint64_t>(header) + digits + kBesideHeaderAndDigits > kMostPreferenceBytes) {
        return nullptr;
    }
    char* end = writeBlock(buffer + header, options.lpFormat, formatBytes);
    end = writeBlock(end, options.lpParms, parmsBytes);
    *end = '\0';
    return buffer;
}

}  // namespace vorn
