// The size that a user asks for, in words like 400x300, 400x300!, 400, x300 and 50%.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vorn::tool {

struct Size {
    int32_t width = 0;
    int32_t height = 0;

    bool operator==(const Size&) const = default;
};

class TargetSize {
  public:
    // Nothing when the text is no size.
    static std::optional<TargetSize> parse(const std::string& text);

    // The size of a picture that had `own`, at least 1x1. With one side, or with both sides and no
    // "!", the aspect is kept; with both, the picture then fits into them.
    Size of(Size own) const;

    // Only smaller, never larger than `own`.
    Size fitting(Size own) const;

  private:
    std::optional<int32_t> width_;
    std::optional<int32_t> height_;
    bool exact_ = false;
    double factor_ = 0;  // of a percentage, else 0
};

}  // namespace vorn::tool
