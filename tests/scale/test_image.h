// Pictures, and the memory that they are scaled from and to.
#pragma once

#include <algorithm>

#include "tests/pixels/picture.h"

namespace vorn_test {

using vorn::test::pick;
using vorn::test::Picture;
using vorn::test::Random;

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
    const int32_t kind = pick(random, 0, 5);
    const int32_t constant = pick(random, 0, image.largest());
    for (int32_t& sample : image.samples) {
        sample = kind == 0   ? constant
                 : kind == 1 ? (random() % 2 ? image.largest() : 0)
                             : pick(random, 0, image.largest());
    }
    return image;
}

// Memory for a band, in plain cells (0) or in some other form, where the channels of the mask are
// present.
inline Picture bandOf(const vorn::test::Shape& shape,
                      unsigned form = 0,
                      unsigned present = 0xFF,
                      size_t guard = 0) {
    Random random(form);
    Picture band =
        form == 0 ? Picture::inForm("cells", shape, guard) : Picture::any(random, shape, guard);
    for (int32_t c = 0; c < shape.channels; ++c) {
        if (!((present >> c) & 1)) band.drop(c);
    }
    return band;
}

}  // namespace vorn_test
