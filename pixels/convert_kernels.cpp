// Grey, RGB and ITU-R BT.601 studio-range YCbCr, in 16.16 fixed point. The factors are those of
// BT.601 times 65536; every sum fits its type for any samples whatever, and what leaves a range is
// clamped.
#include <algorithm>
#include <type_traits>

#include "pixels/line_kernels.h"
#include "pixels/samples.h"

namespace vorn {
namespace {

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

template <class Sample>
Sample at(const uint8_t* row, ptrdiff_t x) {
    return loadSample<Sample>(row + x * static_cast<ptrdiff_t>(sizeof(Sample)));
}

template <class Sample, class Value>
void put(uint8_t* row, ptrdiff_t x, Value value) {
    storeSample(row + x * static_cast<ptrdiff_t>(sizeof(Sample)), static_cast<Sample>(value));
}

template <class Source, class Destination>
void rgbToGray(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
    constexpr bool kNarrowing = kWide<Source> && !kWide<Destination>;
    constexpr uint32_t kFactor = !kWide<Source> && kWide<Destination> ? 257 : 1;
    constexpr int kShift = kNarrowing ? 8 : 0;
    for (ptrdiff_t x = 0; x < count; x++) {
        const uint32_t sum = (uint32_t{at<Source>(source[0], x)} >> kShift) +
                             (uint32_t{at<Source>(source[1], x)} >> kShift) +
                             (uint32_t{at<Source>(source[2], x)} >> kShift);
        put<Destination>(destination[0], x, sum * kFactor / 3);
    }
}

template <class Source, class Destination>
void yuv601ToGray(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
    using Product = std::conditional_t<kWide<Source>, uint64_t, uint32_t>;
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);
    constexpr Product kWhite = kWide<Destination> ? 65535 : 255;
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t y = std::max(at<Source>(source[0], x) - kBlack<Source>, 0);
        const Product gray = (static_cast<Product>(y) * 76310) >> kShift;
        put<Destination>(destination[0], x, std::min(gray, kWhite));
    }
}

template <class Source, class Destination>
void grayToYuv601(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 24, 16);
    for (ptrdiff_t x = 0; x < count; x++) {
        const uint32_t gray = at<Source>(source[0], x);
        put<Destination>(destination[0], x,
                         ((gray * 56284u) >> kShift) + uint32_t{kBlack<Destination>});
        put<Destination>(destination[1], x, kMiddle<Destination>);
        put<Destination>(destination[2], x, kMiddle<Destination>);
    }
}

// Luma and chroma are brought to a 14-bit scale unless both sides have 8 bits.
template <class Source, class Destination>
void yuv601ToRgb(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
    constexpr bool kBytes = !kWide<Source> && !kWide<Destination>;
    using Sum = std::conditional_t<kBytes, int32_t, int64_t>;
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 14, 22, 14);
    static constexpr Sum kTop = (Sum{1} << (kBytes ? 24 : 30)) - 1;
    const auto scaled = [](int32_t value) -> Sum {
        if constexpr (kWide<Source>) {
            return value >> 2;
        } else {
            return kBytes ? value : value * 64 + (value >> 2);
        }
    };
    const auto store = [](uint8_t* row, ptrdiff_t x, Sum sum) {
        put<Destination>(row, x, std::clamp<Sum>(sum, 0, kTop) >> kShift);
    };
    for (ptrdiff_t x = 0; x < count; x++) {
        const Sum y = scaled(std::max(at<Source>(source[0], x) - kBlack<Source>, 0));
        const Sum u = scaled(at<Source>(source[1], x) - kMiddle<Source>);
        const Sum v = scaled(at<Source>(source[2], x) - kMiddle<Source>);
        store(destination[0], x, 76310 * y + 104635 * v);
        store(destination[1], x, 76310 * y - 25690 * u - 53294 * v);
        store(destination[2], x, 76310 * y + 132278 * u);
    }
}

// 16-bit samples lose their lowest bit so that the sums fit 32 bits: at most 56284 * 32767.
template <class Source, class Destination>
void rgbToYuv601(const uint8_t* const source[3], uint8_t* const destination[3], int32_t count) {
    constexpr int kShift = shiftBySizes<Source, Destination>(16, 8, 23, 15);
    constexpr int kDropped = kWide<Source> ? 1 : 0;
    constexpr int32_t kUnit = kWide<Destination> ? 257 : 1;
    constexpr int32_t kYTop = 219 * kUnit;
    constexpr int32_t kChromaBottom = -112 * kUnit;
    constexpr int32_t kChromaTop = 111 * kUnit;
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t r = at<Source>(source[0], x) >> kDropped;
        const int32_t g = at<Source>(source[1], x) >> kDropped;
        const int32_t b = at<Source>(source[2], x) >> kDropped;
        const int32_t y = (16829 * r + 33039 * g + 6416 * b) >> kShift;
        const int32_t u = (28763 * b - 9705 * r - 19057 * g) >> kShift;
        const int32_t v = (28770 * r - 24091 * g - 4679 * b) >> kShift;
        put<Destination>(destination[0], x, std::clamp(y, 0, kYTop) + kBlack<Destination>);
        put<Destination>(destination[1], x,
                         std::clamp(u, kChromaBottom, kChromaTop) + kMiddle<Destination>);
        put<Destination>(destination[2], x,
                         std::clamp(v, kChromaBottom, kChromaTop) + kMiddle<Destination>);
    }
}

// Indices may lie in memory that another program can write to: each is fetched once, so that what
// was compared is what is used.
template <class Index>
int32_t fetchIndex(const uint8_t* indexAt) {
    const volatile uint8_t* bytes = indexAt;
    int32_t index = bytes[0];
    if constexpr (kWide<Index>) {
        index |= bytes[1] << 8;
    }
    return index;
}

template <class Index, class Destination>
void lookUp(const uint8_t* indices,
            ptrdiff_t indexStep,
            const uint8_t* table,
            int32_t entries,
            uint8_t* destination,
            ptrdiff_t destinationStep,
            int32_t count) {
    for (ptrdiff_t x = 0; x < count; x++) {
        const int32_t index = fetchIndex<Index>(indices + x * indexStep);
        const auto sample = index < entries ? at<Destination>(table, index) : Destination{0};
        storeSample(destination + x * destinationStep, sample);
    }
}

using Byte = uint8_t;
using Word = uint16_t;

constexpr ConvertKernels kPlainConversions = {
    {rgbToGray<Byte, Byte>, rgbToGray<Byte, Word>, rgbToGray<Word, Byte>, rgbToGray<Word, Word>},
    {yuv601ToGray<Byte, Byte>, yuv601ToGray<Byte, Word>, yuv601ToGray<Word, Byte>,
     yuv601ToGray<Word, Word>},
    {grayToYuv601<Byte, Byte>, grayToYuv601<Byte, Word>, grayToYuv601<Word, Byte>,
     grayToYuv601<Word, Word>},
    {yuv601ToRgb<Byte, Byte>, yuv601ToRgb<Byte, Word>, yuv601ToRgb<Word, Byte>,
     yuv601ToRgb<Word, Word>},
    {rgbToYuv601<Byte, Byte>, rgbToYuv601<Byte, Word>, rgbToYuv601<Word, Byte>,
     rgbToYuv601<Word, Word>},
};

constexpr LookupKernels kPlainLookups = {
    {lookUp<Byte, Byte>, lookUp<Byte, Word>, lookUp<Word, Byte>, lookUp<Word, Word>}};

}  // namespace

const ConvertKernels& convertKernels() { return kPlainConversions; }

const LookupKernels& lookupKernels() { return kPlainLookups; }

}  // namespace vorn
