#include <algorithm>
#include <charconv>
#include <cstring>

#include "platform/environment.h"
#include "scale/bicubic_plan.h"

namespace vorn {
namespace {

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Whether the number at `text`, which is too large or too small to be held, is small.
bool isTiny(const char* text, const char* end) {
    const char* exponent = std::find_if(text, end, [](char c) { return c == 'e' || c == 'E'; });
    return exponent != end ? exponent[1] == '-' : true;
}

}  // namespace

double parseBlur(const char* text) {
    constexpr double kDefault = 1.0;
    constexpr double kLargest = 256.0;
    if (!text) return kDefault;
    while (isSpace(*text)) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    if (*text == '-') return kDefault;
    const bool hex = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    if (hex) text += 2;

    double value = kDefault;
    const auto [end, failure] =
        std::from_chars(text, text + std::strlen(text), value,
                        hex ? std::chars_format::hex : std::chars_format::general);
    if (failure == std::errc::invalid_argument || value != value) return kDefault;
    if (failure == std::errc::result_out_of_range) value = isTiny(text, end) ? 0.0 : kLargest;
    return negative ? 0.0 : std::min(value, kLargest);
}

double bicubicBlur() { return parseBlur(platform::environmentVariable("VORN_BICUBIC_BLUR")); }

}  // namespace vorn
