#include "tests/pixels/slow_line_copy.h"

#include <algorithm>
#include <array>

namespace vorn::test {
namespace {

using Pixel = std::array<int64_t, 3>;

// Division that rounds down, as arithmetic shifts do.
int64_t floorOf(int64_t value, int64_t by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

struct Sizes {
    bool wideIn, wideOut;
    int64_t choose(int64_t narrow, int64_t widening, int64_t narrowing, int64_t wide) const {
        return wideIn ? (wideOut ? wide : narrowing) : (wideOut ? widening : narrow);
    }
    int64_t shift(int64_t narrow, int64_t widening, int64_t narrowing, int64_t wide) const {
        return int64_t{1} << choose(narrow, widening, narrowing, wide);
    }
    int64_t resized(int64_t value) const { return choose(value, value * 257, value / 256, value); }
    int64_t inBlack() const { return wideIn ? 4112 : 16; }
    int64_t inMiddle() const { return wideIn ? 32896 : 128; }
    int64_t outUnit() const { return wideOut ? 257 : 1; }
};

int64_t grayOfRgb(const Sizes& sizes, Pixel p) {
    if (sizes.wideIn && !sizes.wideOut) p = {p[0] / 256, p[1] / 256, p[2] / 256};
    const int64_t sum = p[0] + p[1] + p[2];
    return !sizes.wideIn && sizes.wideOut ? 257 * sum / 3 : sum / 3;
}

int64_t grayOfYuv(const Sizes& sizes, int64_t luma) {
    const int64_t y = std::max<int64_t>(luma - sizes.inBlack(), 0);
    return std::min(y * 76310 / sizes.shift(16, 8, 24, 16), 255 * sizes.outUnit());
}

Pixel yuvOfGray(const Sizes& sizes, int64_t gray) {
    const int64_t unit = sizes.outUnit();
    return {gray * 56284 / sizes.shift(16, 8, 24, 16) + 16 * unit, 128 * unit, 128 * unit};
}

Pixel rgbOfYuv(const Sizes& sizes, const Pixel& p) {
    const auto scaled = [&](int64_t v) {
        return sizes.choose(v, v * 64 + floorOf(v, 4), floorOf(v, 4), floorOf(v, 4));
    };
    int64_t luma = p[0] - sizes.inBlack();
    luma =
        sizes.wideIn ? std::max<int64_t>(floorOf(luma, 4), 0) : scaled(std::max<int64_t>(luma, 0));
    const int64_t u = scaled(p[1] - sizes.inMiddle());
    const int64_t v = scaled(p[2] - sizes.inMiddle());
    const bool bytes = !sizes.wideIn && !sizes.wideOut;
    const int64_t top = bytes ? 16777215 : 1073741823;
    const auto stored = [&](int64_t sum) {
        return std::min(std::max<int64_t>(sum, 0), top) / sizes.shift(16, 14, 22, 14);
    };
    return {stored(76310 * luma + 104635 * v), stored(76310 * luma - 25690 * u - 53294 * v),
            stored(76310 * luma + 132278 * u)};
}

Pixel yuvOfRgb(const Sizes& sizes, Pixel p) {
    if (sizes.wideIn) p = {p[0] / 2, p[1] / 2, p[2] / 2};
    const int64_t by = sizes.shift(16, 8, 23, 15);
    const int64_t unit = sizes.outUnit();
    const int64_t y = floorOf(16829 * p[0] + 33039 * p[1] + 6416 * p[2], by);
    const int64_t u = floorOf(28763 * p[2] - 9705 * p[0] - 19057 * p[1], by);
    const int64_t v = floorOf(28770 * p[0] - 24091 * p[1] - 4679 * p[2], by);
    return {std::clamp<int64_t>(y, 0, 219 * unit) + 16 * unit,
            std::clamp<int64_t>(u, -112 * unit, 111 * unit) + 128 * unit,
            std::clamp<int64_t>(v, -112 * unit, 111 * unit) + 128 * unit};
}

int countColors(const Picture& picture) { return picture.has(0) + picture.has(1) + picture.has(2); }

// The code that the two buffers really allow.
int suitedCode(const Picture& in, const Picture& out, int code) {
    const bool toColors = out.record.channels >= 3 && countColors(out) > 0;
    const bool toGray = countColors(in) == 3 && out.record.channels < 3;
    const bool fromGray = in.record.channels < 3 && toColors;
    const bool both = in.record.channels >= 3 && countColors(in) > 0 && toColors;
    const bool suits[] = {true, toGray, fromGray, toGray, fromGray, both, both, true};
    return suits[code] ? code : 0;
}

Pixel converted(const Sizes& sizes, int code, const Pixel& p) {
    const int64_t gray = sizes.resized(p[0]);
    if (code == 1) return {grayOfRgb(sizes, p), 0, 0};
    if (code == 2) return {gray, gray, gray};
    if (code == 3) return {grayOfYuv(sizes, p[0]), 0, 0};
    if (code == 4) return yuvOfGray(sizes, p[0]);
    return code == 5 ? rgbOfYuv(sizes, p) : yuvOfRgb(sizes, p);
}

}  // namespace

void slowLineCopy(
    const Picture& in, Picture& out, int inLine, int outLine, int code, const Picture* palette) {
    const Sizes sizes{in.record.bytesPerChannel == 2, out.record.bytesPerChannel == 2};
    const int used = suitedCode(in, out, code);
    if (used == 7 && palette == nullptr) return;
    const int takes = std::array{0, 3, 1, 3, 1, 3, 3, 1}[static_cast<size_t>(used)];
    const int makes = used == 7 ? palette->record.channels
                                : std::array{0, 1, 3, 1, 3, 3, 3}[static_cast<size_t>(used)];
    const bool needsGray = used == 2 || used == 4 || used == 7;
    for (int x = 0; x < out.record.width; x++) {
        Pixel p{};
        for (int c = 0; c < takes; c++) {
            const int64_t absent = used == 5 && c > 0 ? sizes.inMiddle() : 0;
            p[static_cast<size_t>(c)] = in.has(c) ? in.get(c, x, inLine) : absent;
        }
        for (int c = 0; c < makes; c++) {
            if (!out.has(c) || (needsGray && !in.has(0))) continue;
            if (used != 7) {
                const Pixel made = converted(sizes, used, p);
                out.set(c, x, outLine, static_cast<int>(made[static_cast<size_t>(c)]));
            } else if (palette->has(c)) {
                const bool known = p[0] < palette->record.width;
                out.set(c, x, outLine, known ? palette->get(c, static_cast<int>(p[0]), 0) : 0);
            }
        }
        for (int c = 0; c < 8; c++) {
            if (!in.has(takes + c) || !out.has(makes + c)) continue;
            const int64_t value = sizes.resized(in.get(takes + c, x, inLine));
            out.set(makes + c, x, outLine, static_cast<int>(value));
        }
    }
}

}  // namespace vorn::test
