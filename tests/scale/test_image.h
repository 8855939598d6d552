// Pictures, and the memory layouts that they are scaled from and to.
#pragma once

#include <vorn/types.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace vorn_test {

using Random = std::mt19937;

inline int32_t between(Random& random, int32_t low, int32_t high) {
    return low + static_cast<int32_t>(random() % static_cast<uint32_t>(high - low + 1));
}

// A whole picture, one number a sample.
struct Image {
    int32_t width, lines, channels, bytes;
    std::vector<int32_t> samples;

    Image(int32_t w, int32_t h, int32_t c, int32_t b)
        : width(w),
          lines(h),
          channels(c),
          bytes(b),
          samples(static_cast<size_t>(w) * static_cast<size_t>(h) * static_cast<size_t>(c)) {}

    int32_t largest() const { return bytes == 1 ? 255 : 65535; }
    int32_t& at(int32_t x, int32_t y, int32_t c) { return samples[index(x, y, c)]; }
    int32_t at(int32_t x, int32_t y, int32_t c) const { return samples[index(x, y, c)]; }
    bool operator==(const Image&) const = default;

  private:
    size_t index(int32_t x, int32_t y, int32_t c) const {
        return (static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) *
                   static_cast<size_t>(channels) +
               static_cast<size_t>(c);
    }
};

// Noise, black and white noise (the strongest overshoots), or one value.
inline Image randomImage(Random& random, int32_t w, int32_t h, int32_t c, int32_t b) {
    Image image(w, h, c, b);
    const int32_t kind = between(random, 0, 5);
    const int32_t constant = between(random, 0, image.largest());
    for (int32_t& sample : image.samples) {
        sample = kind == 0   ? constant
                 : kind == 1 ? (random() % 2 ? image.largest() : 0)
                             : between(random, 0, image.largest());
    }
    return image;
}

enum class Layout {
    Interleaved,
    Planar,
    LineInterleaved,
    Cells,      // interleaved, with unused bytes behind every pixel and line, oddly placed
    Backwards,  // channels in reverse order
    Mirrored,   // negative pixel and line steps
    Turned,     // columns lie as lines, negative line step
    Count
};

// Memory for a band in some layout, with guard bytes around it, and the record that describes it.
class Band {
  public:
    static constexpr uint8_t kGuard = 0xA5;

    Band(Layout layout,
         int32_t width,
         int32_t lines,
         int32_t channels,
         int32_t bytes,
         unsigned presentMask,
         size_t guard)
        : guard_(guard) {
        record.width = width;
        record.height = lines;
        record.channels = channels;
        record.bytesPerChannel = bytes;
        for (int32_t c = 0; c < channels; ++c) setSteps(layout, c);
        place(presentMask);
    }

    VORN_ChunkyBuffer record{};

    int32_t get(int32_t x, int32_t line, int32_t c) const {
        const uint8_t* p = sample(x, line, c);
        return record.bytesPerChannel == 1 ? p[0] : p[0] | p[1] << 8;
    }
    void put(int32_t x, int32_t line, int32_t c, int32_t value) {
        uint8_t* p = sample(x, line, c);
        p[0] = static_cast<uint8_t>(value);
        if (record.bytesPerChannel == 2) p[1] = static_cast<uint8_t>(value >> 8);
    }
    void fill(uint8_t value) { std::fill(bytes_.begin(), bytes_.end(), value); }

    // Puts the guard value over every sample; what is left must be untouched guard bytes.
    bool guardsIntact() {
        for (int32_t c = 0; c < record.channels; ++c) {
            if (!record.channelPlace[c]) continue;
            for (int32_t y = 0; y < lines_; ++y) {
                for (int32_t x = 0; x < record.width; ++x) put(x, y, c, kGuard << 8 | kGuard);
            }
        }
        return std::all_of(bytes_.begin(), bytes_.end(), [](uint8_t b) { return b == kGuard; });
    }

  private:
    uint8_t* sample(int32_t x, int32_t line, int32_t c) const {
        return record.channelPlace[c] + static_cast<ptrdiff_t>(line) * record.lineStep[c] +
               static_cast<ptrdiff_t>(x) * record.pixelStep[c];
    }

    void setSteps(Layout layout, int32_t c) {
        const int32_t b = record.bytesPerChannel, n = record.channels, w = record.width;
        int32_t pixel = n * b, line = n * b * w, first = c * b;
        if (layout == Layout::Planar) pixel = b, line = b * w, first = c * b * w * record.height;
        if (layout == Layout::LineInterleaved) pixel = b, first = c * b * w;
        if (layout == Layout::Cells) pixel = n * b + 3, line = pixel * w + 5, first = c * b + 1;
        if (layout == Layout::Backwards) first = (n - 1 - c) * b;
        if (layout == Layout::Mirrored) pixel = -pixel, line = -line;
        if (layout == Layout::Turned) line = -pixel, pixel = pixel * record.height;
        record.pixelStep[c] = pixel;
        record.lineStep[c] = line;
        offset_[c] = first;
    }

    // Allocates exactly the bytes from the lowest to the highest sample, and the guards.
    void place(unsigned presentMask) {
        lines_ = record.height;
        ptrdiff_t low = 0, high = 0;
        for (int32_t c = 0; c < record.channels; ++c) {
            const ptrdiff_t across = static_cast<ptrdiff_t>(record.width - 1) * record.pixelStep[c];
            const ptrdiff_t down = static_cast<ptrdiff_t>(lines_ - 1) * record.lineStep[c];
            const ptrdiff_t first = offset_[c];
            low = std::min(low,
                           first + std::min<ptrdiff_t>(across, 0) + std::min<ptrdiff_t>(down, 0));
            high = std::max(high, first + std::max<ptrdiff_t>(across, 0) +
                                      std::max<ptrdiff_t>(down, 0) + record.bytesPerChannel);
        }
        bytes_.assign(static_cast<size_t>(high - low) + 2 * guard_, kGuard);
        for (int32_t c = 0; c < record.channels; ++c) {
            record.channelPlace[c] =
                (presentMask >> c) & 1 ? bytes_.data() + guard_ + (offset_[c] - low) : nullptr;
        }
    }

    size_t guard_;
    int32_t lines_ = 0;
    ptrdiff_t offset_[VORN_MAX_CHANNELS]{};
    std::vector<uint8_t> bytes_;
};

}  // namespace vorn_test
