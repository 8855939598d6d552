#include "tools/target_size.h"

#include <vorn/types.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vorn::tool {
namespace {

constexpr double kMostPercent = 1e7;  // more would make any picture too large

// Takes a number from the front of the text. False when there is none in the range of sizes.
bool takeLength(const char*& at, const char* end, std::optional<int32_t>& length) {
    int32_t value = 0;
    const auto [behind, error] = std::from_chars(at, end, value);
    if (error != std::errc{} || value < 1 || value > VORN_MAX_SIZE) return false;
    at = behind;
    length = value;
    return true;
}

// Beyond the largest size the number says so, and the library refuses it.
int32_t rounded(double length) {
    return static_cast<int32_t>(
        std::clamp(std::floor(length + 0.5), 1.0, int32_t{VORN_MAX_SIZE} + 1.0));
}

Size scaledBy(Size own, double factor) {
    return {rounded(own.width * factor), rounded(own.height * factor)};
}

}  // namespace

std::optional<TargetSize> TargetSize::parse(const std::string& text) {
    TargetSize size;
    const char* at = text.data();
    const char* const end = at + text.size();
    if (!text.empty() && text.back() == '%') {
        double percent = 0;
        const auto [behind, error] = std::from_chars(at, end - 1, percent);
        if (error != std::errc{} || behind != end - 1 || !(percent > 0) || percent > kMostPercent)
            return std::nullopt;
        size.factor_ = percent / 100;
        return size;
    }
    if (at != end && *at != 'x' && !takeLength(at, end, size.width_)) return std::nullopt;
    if (at != end && *at == 'x' && !takeLength(++at, end, size.height_)) return std::nullopt;
    if (at != end && *at == '!' && size.width_ && size.height_) {
        size.exact_ = true;
        ++at;
    }
    if (at != end || (!size.width_ && !size.height_)) return std::nullopt;
    return size;
}

Size TargetSize::of(Size own) const {
    if (factor_ > 0) return scaledBy(own, factor_);
    if (exact_) return {*width_, *height_};
    const double across = width_ ? static_cast<double>(*width_) / own.width : HUGE_VAL;
    const double down = height_ ? static_cast<double>(*height_) / own.height : HUGE_VAL;
    return scaledBy(own, std::min(across, down));
}

Size TargetSize::fitting(Size own) const {
    const Size size = of(own);
    return size.width < own.width || size.height < own.height ? size : own;
}

}  // namespace vorn::tool
