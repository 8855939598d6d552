// Pictures, and the memory layouts that they are scaled from and to.
#pragma once

#include <algorithm>

#include "tests/pixels/picture.h"

namespace vorn_test {

using vorn::test::Picture;
using vorn::test::Random;

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

// Memory for a band in some layout, with so many guard bytes around it, where the channels of the
// mask are present.
inline Picture bandOf(Layout layout,
                      const vorn::test::Shape& shape,
                      unsigned present = 0xFF,
                      size_t guard = 0) {
    const auto [w, h, n, b] = shape;
    VORN_DataFormat format{DF_Explicit, w, h, n, b, 0, {}, {}, {}, {}};
    int64_t size = 0;
    for (int32_t c = 0; c < n; ++c) {
        int32_t pixel = n * b, line = n * b * w, first = c * b;
        if (layout == Layout::Planar) pixel = b, line = b * w, first = c * b * w * h;
        if (layout == Layout::LineInterleaved) pixel = b, first = c * b * w;
        if (layout == Layout::Cells) pixel = n * b + 3, line = pixel * w + 5, first = c * b + 1;
        if (layout == Layout::Backwards) first = (n - 1 - c) * b;
        if (layout == Layout::Turned) line = pixel, pixel *= h;
        size =
            std::max<int64_t>(size, first + int64_t{pixel} * (w - 1) + int64_t{line} * (h - 1) + b);
        const bool mirrored = layout == Layout::Mirrored;
        if (mirrored) first += pixel * (w - 1);
        if (mirrored || layout == Layout::Turned) first += line * (h - 1), line = -line;
        format.pixelStep[c] = mirrored ? -pixel : pixel;
        format.lineStep[c] = line;
        format.channelPlace[c] = static_cast<uint32_t>(first);
    }
    Picture band(format, static_cast<size_t>(size), guard);
    for (int32_t c = 0; c < n; ++c) {
        if (!((present >> c) & 1)) band.drop(c);
    }
    return band;
}

}  // namespace vorn_test
