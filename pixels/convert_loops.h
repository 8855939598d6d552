// The loops of the conversions between grey, RGB and ITU-R BT.601 studio-range YCbCr, in 16.16
// fixed point: the factors are those of BT.601 times 65536. All sums fit 32 bits for any samples
// whatever, which lets a compiler make many at once; what leaves a range is clamped.
//
// They are compiled once for every processor and once for newer ones.
#pragma once

#include <algorithm>

#include "pixels/line_kernels.h"
#include "pixels/samples.h"

#define VORN_LOOP [[gnu::always_inline]] inline
// Says that no round of a loop writes what another one reads.
#if defined(__clang__)
#define VORN_SEPARATE_ROUNDS
#else
#define VORN_SEPARATE_ROUNDS _Pragma("GCC ivdep")
#endif

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

// A pixel, before or after the conversion.
struct Colors {
    int32_t a, b = 0, c = 0;
};

template <class Sample>
VORN_LOOP int32_t sampleAt(const uint8_t* row, ptrdiff_t x) {
    return loadSample<Sample>(row + x * static_cast<ptrdiff_t>(sizeof(Sample)));
}

template <class Sample>
VORN_LOOP void putSample(uint8_t* row, ptrdiff_t x, int32_t value) {
    storeSample(row + x * static_cast<ptrdiff_t>(sizeof(Sample)), static_cast<Sample>(value));
}

// The rows don't overlap.
template <class Source, class Destination, int kIn, int kOut, class Convert>
VORN_LOOP void eachPixel(const uint8_t* __restrict inA,
                         const uint8_t* __restrict inB,
                         const uint8_t* __restrict inC,
                         uint8_t* __restrict outA,
                         uint8_t* __restrict outB,
                         uint8_t* __restrict outC,
                         int32_t count,
                         Convert convert) {
    VORN_SEPARATE_ROUNDS
    for (ptrdiff_t x = 0; x < count; x++) {
        Colors in{sampleAt<Source>(inA, x)};
        if constexpr (kIn == 3) {
            in.b = sampleAt<Source>(inB, x);
            in.c = sampleAt<Source>(inC, x);
        }
        const Colors out = convert(in);
        putSample<Destination>(outA, x, out.a);
        if constexpr (kOut == 3) {
            putSample<Destination>(outB, x, out.b);
            putSample<Destination>(outC, x, out.c);
        }
    }
}

// A conversion says how many channels it takes and makes, and converts a pixel.
template <class Source, class Destination, template <class, class> class Conversion>
VORN_LOOP void convertRows(const uint8_t* const source[3],
                           uint8_t* const destination[3],
                           int32_t count) {
    using Kind = Conversion<Source, Destination>;
    eachPixel<Source, Destination, Kind::kIn, Kind::kOut>(
        source[0], source[1], source[2], destination[0], destination[1], destination[2], count,
        [](const Colors& colors) { return Kind::convert(colors); });
}

template <class Source, class Destination>
struct RgbToGray {
    static constexpr int kIn = 3, kOut = 1;
    static constexpr int kShift = kWide<Source> && !kWide<Destination> ? 8 : 0;
    static constexpr uint32_t kFactor = !kWide<Source> && kWide<Destination> ? 257 : 1;

    static Colors convert(const Colors& rgb) {
        const int32_t sum = (rgb.a >> kShift) + (rgb.b >> kShift) + (rgb.c >> kShift);
        return {static_cast<int32_t>(static_cast<uint32_t>(sum) * kFactor / 3)};
    }
};

// Above kBrightest all is white; up to there the product fits 32 bits.
template <class Source, class Destination>
struct Yuv601ToGray {
    static constexpr int kIn = 1, kOut = 1;
    static constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);
    static constexpr int32_t kBrightest = kWide<Source> ? 56283 : 255;
    static constexpr uint32_t kWhite = kWide<Destination> ? 65535 : 255;

    static Colors convert(const Colors& yuv) {
        const int32_t y = std::clamp(yuv.a - kBlack<Source>, 0, kBrightest);
        const uint32_t gray = (static_cast<uint32_t>(y) * 76310u) >> kShift;
        return {static_cast<int32_t>(std::min(gray, kWhite))};
    }
};

template <class Source, class Destination>
struct GrayToYuv601 {
    static constexpr int kIn = 1, kOut = 3;
    static constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);

    static Colors convert(const Colors& gray) {
        const uint32_t y = (static_cast<uint32_t>(gray.a) * 56284u) >> kShift;
        return {static_cast<int32_t>(y) + kBlack<Destination>, kMiddle<Destination>,
                kMiddle<Destination>};
    }
};

// Luma and chroma are brought to a 14-bit scale unless both sides have 8 bits. The sums then lie
// between -1.1e9 and 2.3e9: moved up by kBelow they are clamped as unsigned numbers.
template <class Source, class Destination>
struct Yuv601ToRgb {
    static constexpr int kIn = 3, kOut = 3;
    static constexpr bool kBytes = !kWide<Source> && !kWide<Destination>;
    static constexpr int kShift = shiftBySizes<Source, Destination>(16, 14, 22, 14);
    static constexpr uint32_t kTop = (1u << (kBytes ? 24 : 30)) - 1;
    static constexpr uint32_t kBelow = 3u << 29;

    static uint32_t scaled(int32_t value) {
        if constexpr (kWide<Source>) {
            return static_cast<uint32_t>(value >> 2);
        } else {
            return static_cast<uint32_t>(kBytes ? value : value * 64 + (value >> 2));
        }
    }
    static int32_t clamped(uint32_t sum) {
        const uint32_t inside = std::clamp(sum + kBelow, kBelow, kBelow + kTop) - kBelow;
        return static_cast<int32_t>(inside >> kShift);
    }
    static Colors convert(const Colors& yuv) {
        const uint32_t y = 76310 * scaled(std::max(yuv.a - kBlack<Source>, 0));
        const uint32_t u = scaled(yuv.b - kMiddle<Source>);
        const uint32_t v = scaled(yuv.c - kMiddle<Source>);
        return {clamped(y + 104635 * v), clamped(y - 25690 * u - 53294 * v),
                clamped(y + 132278 * u)};
    }
};

// 16-bit samples lose their lowest bit so that the sums fit 32 bits: at most 56284 * 32767.
template <class Source, class Destination>
struct RgbToYuv601 {
    static constexpr int kIn = 3, kOut = 3;
    static constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 23, 15);
    static constexpr int kDropped = kWide<Source> ? 1 : 0;
    static constexpr int32_t kUnit = kWide<Destination> ? 257 : 1;

    static int32_t chroma(int32_t sum) {
        return std::clamp(sum >> kShift, -112 * kUnit, 111 * kUnit) + kMiddle<Destination>;
    }
    static Colors convert(const Colors& rgb) {
        const int32_t r = rgb.a >> kDropped;
        const int32_t g = rgb.b >> kDropped;
        const int32_t b = rgb.c >> kDropped;
        const int32_t y = (16829 * r + 33039 * g + 6416 * b) >> kShift;
        return {std::clamp(y, 0, 219 * kUnit) + kBlack<Destination>,
                chroma(28763 * b - 9705 * r - 19057 * g), chroma(28770 * r - 24091 * g - 4679 * b)};
    }
};

// All of them, each compiled as Form<its loop>::run.
template <template <ConvertKernel> class Form, template <class, class> class Conversion>
constexpr void setConversion(ConvertKernel (&bySize)[kSizeFlags]) {
    bySize[0] = Form<convertRows<uint8_t, uint8_t, Conversion>>::run;
    bySize[1] = Form<convertRows<uint8_t, uint16_t, Conversion>>::run;
    bySize[2] = Form<convertRows<uint16_t, uint8_t, Conversion>>::run;
    bySize[3] = Form<convertRows<uint16_t, uint16_t, Conversion>>::run;
}

template <template <ConvertKernel> class Form>
constexpr ConvertKernels conversionsAs() {
    ConvertKernels kernels{};
    setConversion<Form, RgbToGray>(kernels.rgbToGray);
    setConversion<Form, Yuv601ToGray>(kernels.yuv601ToGray);
    setConversion<Form, GrayToYuv601>(kernels.grayToYuv601);
    setConversion<Form, Yuv601ToRgb>(kernels.yuv601ToRgb);
    setConversion<Form, RgbToYuv601>(kernels.rgbToYuv601);
    return kernels;
}

}  // namespace vorn
