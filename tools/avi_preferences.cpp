#include "tools/avi_preferences.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "avi/preferences.h"

namespace vorn::tool {

namespace {

// What the string says, or the defaults.
class Preferences {
  public:
    explicit Preferences(const std::string& text)
        : isValid(readAviPreferences(text.c_str(), options, frameRate)) {}
    ~Preferences() { releaseAviBlocks(options); }
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

    AviOptions options{};
    int32_t frameRate = 0;
    bool isValid;
};

std::string hexadecimal(uint32_t number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%x", number);
    return text.data();
}

// Four letters, the first in the lowest byte; a number where they are no letters.
std::string fourLetters(uint32_t code) {
    std::string letters;
    for (int shift = 0; shift < 32; shift += 8) letters += static_cast<char>(code >> shift & 0xFF);
    const bool plain =
        std::ranges::all_of(letters, [](char letter) { return letter >= ' ' && letter <= '~'; });
    return plain ? letters : hexadecimal(code);
}

std::string block(const uint8_t* bytes, uint32_t count) {
    return std::to_string(count) + " bytes" + (bytes == nullptr && count > 0 ? ", missing" : "");
}

}  // namespace

bool isAviPreference(const std::string& text) { return text.starts_with("VORN_AVI_"); }

std::vector<std::pair<std::string, std::string>> aviPreferenceLines(const std::string& text) {
    const Preferences read(text);
    const AviOptions& options = read.options;
    std::vector<std::pair<std::string, std::string>> lines;
    if (!read.isValid) lines.emplace_back("Not valid", "the defaults count:");
    lines.insert(lines.end(),
                 {{"Frame rate", std::to_string(read.frameRate)},
                  {"Stream type", fourLetters(options.fccType)},
                  {"Compressor", fourLetters(options.fccHandler)},
                  {"Key frame every", std::to_string(options.dwKeyFrameEvery) + " frames"},
                  {"Quality", std::to_string(options.dwQuality) + " of 10000"},
                  {"Bytes per second", std::to_string(options.dwBytesPerSecond)},
                  {"Flags", hexadecimal(options.dwFlags)},
                  {"Interleave every", std::to_string(options.dwInterleaveEvery) + " frames"},
                  {"Format block", block(options.lpFormat, options.cbFormat)},
                  {"Parameter block", block(options.lpParms, options.cbParms)}});
    return lines;
}

Json aviPreferenceJson(const std::string& text) {
    const Preferences read(text);
    const AviOptions& options = read.options;
    return {{"valid", read.isValid},
            {"frameRate", read.frameRate},
            {"streamType", fourLetters(options.fccType)},
            {"compressor", fourLetters(options.fccHandler)},
            {"keyFrameEvery", options.dwKeyFrameEvery},
            {"quality", options.dwQuality},
            {"bytesPerSecond", options.dwBytesPerSecond},
            {"flags", options.dwFlags},
            {"interleaveEvery", options.dwInterleaveEvery},
            {"formatBytes", options.cbFormat},
            {"parameterBytes", options.cbParms}};
}

}  // namespace vorn::tool
