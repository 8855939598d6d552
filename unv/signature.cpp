#include "unv/signature.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <charconv>
#include <optional>

namespace vorn {
namespace {

using ByteSet = std::bitset<256>;

constexpr uint32_t kBitsOfByte = 8;

// Reads one signature from front to back.
class Pattern {
  public:
    explicit Pattern(std::string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }

    std::optional<size_t> offset() {
        size_t value = 0;
        const auto [end, error] =
            std::from_chars(rest_.data(), rest_.data() + rest_.size(), value, 10);
        if (error != std::errc()) return std::nullopt;
        rest_.remove_prefix(static_cast<size_t>(end - rest_.data()));
        if (!take(':')) return std::nullopt;
        return value;
    }

    // What the next byte of the file may be; nothing when the pattern is broken.
    std::optional<ByteSet> nextByte() {
        if (inText_) return textByte();
        if (take('\'')) {
            inText_ = true;
            return textByte();
        }
        if (take('[')) return choice();
        if (rest_.substr(0, 2) == "..") {
            rest_.remove_prefix(2);
            return ByteSet().set();
        }
        const auto byte = hexByte();
        return byte ? std::optional(ByteSet().set(*byte)) : std::nullopt;
    }

  private:
    bool take(char c) {
        if (rest_.empty() || rest_.front() != c) return false;
        rest_.remove_prefix(1);
        return true;
    }

    std::optional<ByteSet> textByte() {
        if (rest_.empty() || rest_.front() == '\'') return std::nullopt;
        const auto byte = static_cast<uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        inText_ = !take('\'');
        return inText_ && rest_.empty() ? std::nullopt : std::optional(ByteSet().set(byte));
    }

    std::optional<uint8_t> hexByte() {
        uint8_t value = 0;
        const std::string_view digits = rest_.substr(0, 2);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        if (error != std::errc() || digits.size() != 2 || end != digits.data() + 2)
            return std::nullopt;
        rest_.remove_prefix(2);
        return value;
    }

    std::optional<ByteSet> choice() {
        ByteSet bytes;
        while (!take(']')) {
            const auto first = hexByte();
            const auto last = take('-') ? hexByte() : first;
            if (!first || !last || *last < *first) return std::nullopt;
            for (size_t byte = *first; byte <= *last; ++byte) bytes.set(byte);
        }
        return bytes.any() ? std::optional(bytes) : std::nullopt;
    }

    std::string_view rest_;
    bool inText_ = false;
};

// A byte that may have n values pins down as many bits as halving 256 to n takes.
uint32_t bitsOf(const ByteSet& bytes) {
    return kBitsOfByte - static_cast<uint32_t>(std::bit_width(bytes.count() - 1));
}

uint32_t bitsOfOne(std::string_view signature, std::span<const uint8_t> head) {
    Pattern pattern(signature);
    const auto offset = pattern.offset();
    if (!offset || *offset > head.size()) return 0;
    uint32_t bits = 0;
    bool matches = true;
    for (size_t place = *offset; !pattern.atEnd(); ++place) {
        const auto allowed = pattern.nextByte();
        if (!allowed) return 0;
        matches = matches && place < head.size() && allowed->test(head[place]);
        bits += bitsOf(*allowed);
    }
    return matches ? bits : 0;
}

// Blanks around an entry don't belong to it.
std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

uint32_t bitsPinnedDown(std::string_view signatures, std::span<const uint8_t> head) {
    uint32_t best = 0;
    while (!signatures.empty()) {
        const size_t comma = std::min(signatures.find(','), signatures.size());
        best = std::max(best, bitsOfOne(trimmed(signatures.substr(0, comma)), head));
        signatures.remove_prefix(std::min(comma + 1, signatures.size()));
    }
    return best;
}

}  // namespace vorn
