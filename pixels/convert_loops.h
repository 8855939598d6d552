// The loops of the conversions between grey, RGB and ITU-R BT.601 studio-range YCbCr, in 16.16 fixed
// point: the factors are those of BT.601 times 65536. All sums fit 32 bits for any samples whatever,
// which lets a compiler make many at once; what leaves a range is clamped.
//
// They are compiled once for every processor and once for newer ones.
#pragma once

#include <algorithm>

#include "pixels/line_kernels.h"
#include "pixels/samples.h"

#define VORN_LOOP [[gnu::always_inline]] inline

namespace vorn {

template <class Sample>
constexpr bool kWide = sizeof(Sample) == 2;

// Black and the middle of the chroma range.
template <class Sample>
constexpr int32_t kBlack = kWide<Sample> ? 16 * 257 : 16;
template <class Sample>
constexpr int32_t kMiddle = kWide<Sample> ? 128 * 257 : 128;

// A shift by the sizes: between 8 bits, to 16, from 16, between 16.
template <class Source, class Destination>
constexpr int shiftBySizes(int narrow, int widening, int narrowing, int wide) {
    if constexpr (kWide<Source>) {
        return kWide<Destination> ? wide : narrowing;
    } else {
        return kWide<Destination> ? widening : narrow;
    }
}

// The row of a channel: nothing else is written through it or changes under it.
template <class Sample>
class InRow {
  public:
    VORN_LOOP explicit InRow(const uint8_t* bytes) : bytes_(bytes) {}
    VORN_LOOP int32_t operator[](ptrdiff_t x) const {
        return loadSample<Sample>(bytes_ + x * static_cast<ptrdiff_t>(sizeof(Sample)));
    }

  private:
    const uint8_t* __restrict bytes_;
};

template <class Sample>
class OutRow {
  public:
    VORN_LOOP explicit OutRow(uint8_t* bytes) : bytes_(bytes) {}
    template <class Value>
    VORN_LOOP void set(ptrdiff_t x, Value value) const {
        storeSample(bytes_ + x * static_cast<ptrdiff_t>(sizeof(Sample)),
                    static_cast<Sample>(value));
    }

  private:
    uint8_t* __restrict bytes_;
};

template <class Source, class Destination>
VORN_LOOP void rgbToGray(const uint8_t* const source[3],
                         uint8_t* const destination[3],
                         int32_t count) {
    constexpr bool kNarrowing = kWide<Source> && !kWide<Destination>;
    constexpr uint32_t kFactor = !kWide<Source> && kWide<Destination> ? 257 : 1;
    constexpr int kShift = kNarrowing ? 8 : 0;
    const InRow<Source> r(source[0]), g(source[1]), b(source[2]);
    const OutRow<Destination> gray(destination[0]);
    for (ptrdiff_t x = 0; x < count; x++) {
        const auto sum =
            static_cast<uint32_t>((r[x] >> kShift) + (g[x] >> kShift) + (b[x] >> kShift));
        gray.set(x, sum * kFactor / 3);
    }
}

// Above `kBrightest` all is white; up to there the product fits 32 bits.
template <class Source, class Destination>
VORN_LOOP void yuv601ToGray(const uint8_t* const source[3],
                            uint8_t* const destination[3],
                            int32_t count) {
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);
    constexpr uint32_t kWhite = kWide<Destination> ? 65535 : 255;
    constexpr int32_t kBrightest = kWide<Source> ? 56283 : 255;
    const InRow<Source> luma(source[0]);
    const OutRow<Destination> gray(destination[0]);
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t y = std::clamp(luma[x] - kBlack<Source>, 0, kBrightest);
        gray.set(x, std::min((static_cast<uint32_t>(y) * 76310) >> kShift, kWhite));
    }
}

template <class Source, class Destination>
VORN_LOOP void grayToYuv601(const uint8_t* const source[3],
                            uint8_t* const destination[3],
                            int32_t count) {
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);
    const InRow<Source> gray(source[0]);
    const OutRow<Destination> y(destination[0]), u(destination[1]), v(destination[2]);
    for (ptrdiff_t x = 0; x < count; x++) {
        y.set(x, ((static_cast<uint32_t>(gray[x]) * 56284u) >> kShift) +
                     uint32_t{kBlack<Destination>});
        u.set(x, kMiddle<Destination>);
        v.set(x, kMiddle<Destination>);
    }
}

// Luma and chroma are brought to a 14-bit scale unless both sides have 8 bits. The sums then lie
// between -1.1e9 and 2.3e9: moved up by kBelow they are clamped as unsigned numbers.
template <class Source, class Destination>
VORN_LOOP void yuv601ToRgb(const uint8_t* const source[3],
                           uint8_t* const destination[3],
                           int32_t count) {
    constexpr bool kBytes = !kWide<Source> && !kWide<Destination>;
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 14, 22, 14);
    static constexpr uint32_t kTop = (1u << (kBytes ? 24 : 30)) - 1;
    static constexpr uint32_t kBelow = 3u << 29;
    const auto scaled = [](int32_t value) {
        if constexpr (kWide<Source>) {
            return static_cast<uint32_t>(value >> 2);
        } else {
            return static_cast<uint32_t>(kBytes ? value : value * 64 + (value >> 2));
        }
    };
    const auto stored = [](uint32_t sum) {
        return (std::clamp(sum + kBelow, kBelow, kBelow + kTop) - kBelow) >> kShift;
    };
    const InRow<Source> luma(source[0]), cb(source[1]), cr(source[2]);
    const OutRow<Destination> r(destination[0]), g(destination[1]), b(destination[2]);
    for (ptrdiff_t x = 0; x < count; x++) {
        const uint32_t y = scaled(std::max(luma[x] - kBlack<Source>, 0));
        const uint32_t u = scaled(cb[x] - kMiddle<Source>);
        const uint32_t v = scaled(cr[x] - kMiddle<Source>);
        r.set(x, stored(76310 * y + 104635 * v));
        g.set(x, stored(76310 * y - 25690 * u - 53294 * v));
        b.set(x, stored(76310 * y + 132278 * u));
    }
}

// 16-bit samples lose their lowest bit so that the sums fit 32 bits: at most 56284 * 32767.
template <class Source, class Destination>
VORN_LOOP void rgbToYuv601(const uint8_t* const source[3],
                           uint8_t* const destination[3],
                           int32_t count) {
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 23, 15);
    constexpr int kDropped = kWide<Source> ? 1 : 0;
    constexpr int32_t kUnit = kWide<Destination> ? 257 : 1;
    constexpr int32_t kYTop = 219 * kUnit;
    constexpr int32_t kChromaBottom = -112 * kUnit;
    constexpr int32_t kChromaTop = 111 * kUnit;
    const InRow<Source> red(source[0]), green(source[1]), blue(source[2]);
    const OutRow<Destination> luma(destination[0]), cb(destination[1]), cr(destination[2]);
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t r = red[x] >> kDropped;
        const int32_t g = green[x] >> kDropped;
        const int32_t b = blue[x] >> kDropped;
        const int32_t y = (16829 * r + 33039 * g + 6416 * b) >> kShift;
        const int32_t u = (28763 * b - 9705 * r - 19057 * g) >> kShift;
        const int32_t v = (28770 * r - 24091 * g - 4679 * b) >> kShift;
        luma.set(x, std::clamp(y, 0, kYTop) + kBlack<Destination>);
        cb.set(x, std::clamp(u, kChromaBottom, kChromaTop) + kMiddle<Destination>);
        cr.set(x, std::clamp(v, kChromaBottom, kChromaTop) + kMiddle<Destination>);
    }
}

// All of them, each compiled as Form<the loop>::run.
template <template <ConvertKernel> class Form>
constexpr ConvertKernels conversionsAs() {
    using Byte = uint8_t;
    using Word = uint16_t;
    return {{Form<rgbToGray<Byte, Byte>>::run, Form<rgbToGray<Byte, Word>>::run,
             Form<rgbToGray<Word, Byte>>::run, Form<rgbToGray<Word, Word>>::run},
            {Form<yuv601ToGray<Byte, Byte>>::run, Form<yuv601ToGray<Byte, Word>>::run,
             Form<yuv601ToGray<Word, Byte>>::run, Form<yuv601ToGray<Word, Word>>::run},
            {Form<grayToYuv601<Byte, Byte>>::run, Form<grayToYuv601<Byte, Word>>::run,
             Form<grayToYuv601<Word, Byte>>::run, Form<grayToYuv601<Word, Word>>::run},
            {Form<yuv601ToRgb<Byte, Byte>>::run, Form<yuv601ToRgb<Byte, Word>>::run,
             Form<yuv601ToRgb<Word, Byte>>::run, Form<yuv601ToRgb<Word, Word>>::run},
            {Form<rgbToYuv601<Byte, Byte>>::run, Form<rgbToYuv601<Byte, Word>>::run,
             Form<rgbToYuv601<Word, Byte>>::run, Form<rgbToYuv601<Word, Word>>::run}};
}

}  // namespace vorn
