#include "formats/heif/hevc_size.h"

#include <algorithm>
#include <vector>

namespace heif {
namespace {

constexpr uint8_t kParameterSet = 33;
constexpr size_t kUnitHeadBits = 16;
constexpr size_t kProfileBits = 88;
constexpr size_t kLevelBits = 8;
constexpr size_t kMostLayers = 8;

// Beyond the end there are only zeros.
class Bits {
  public:
    // A 3 behind two zeros only keeps the next bytes from looking like the start of a unit.
    explicit Bits(std::span<const uint8_t> unit) {
        int zeros = 0;
        for (const uint8_t byte : unit) {
            const bool kept = zeros < 2 || byte != 3;
            if (kept) bytes_.push_back(byte);
            zeros = kept && byte == 0 ? zeros + 1 : 0;
        }
    }

    void skip(size_t count) { at_ += count; }

    uint64_t number(size_t count) {
        uint64_t value = 0;
        for (; count > 0; --count, ++at_)
            value =
                value << 1 | (at_ / 8 < bytes_.size() ? bytes_[at_ / 8] >> (7 - at_ % 8) & 1 : 0);
        return value;
    }

    // As many zeros as bits follow the first one.
    uint64_t exponential() {
        size_t zeros = 0;
        while (zeros < 32 && number(1) == 0) ++zeros;
        return (uint64_t{1} << zeros) - 1 + number(zeros);
    }

  private:
    std::vector<uint8_t> bytes_;
    size_t at_ = 0;
};

void skipProfiles(Bits& bits, size_t layersBelow) {
    bits.skip(kProfileBits + kLevelBits);
    if (layersBelow == 0) return;
    size_t present = 0;
    for (size_t i = 0; i < kMostLayers; ++i) {
        const bool hasProfile = bits.number(1) != 0 && i < layersBelow;
        const bool hasLevel = bits.number(1) != 0 && i < layersBelow;
        present += (hasProfile ? kProfileBits : 0) + (hasLevel ? kLevelBits : 0);
    }
    bits.skip(present);
}

}  // namespace

int64_t codedPixels(std::span<const uint8_t> unit) {
    if (unit.empty() || (unit[0] >> 1 & 0x3F) != kParameterSet) return 0;
    Bits bits(unit);
    bits.skip(kUnitHeadBits + 4);
    const size_t layersBelow = bits.number(3);
    bits.skip(1);
    skipProfiles(bits, layersBelow);
    bits.exponential();  // the set's number
    if (bits.exponential() == 3)
        bits.skip(1);  // colours of full resolution: perhaps three pictures
    const uint64_t width = bits.exponential();
    const uint64_t height = bits.exponential();
    constexpr uint64_t kMost = uint64_t{1} << 31;
    return static_cast<int64_t>(std::min(width, kMost) * std::min(height, kMost - 1));
}

}  // namespace heif
