#include "tests/conversation/pictures.h"

#include <algorithm>

#include "tests/pixels/slow_line_copy.h"

namespace {

template <class Function>
void forEachSample(const Picture& picture, Function function) {
    for (int y = 0; y < picture.record.height; ++y) {
        for (int x = 0; x < picture.record.width; ++x) {
            for (int c = 0; c < picture.record.channels; ++c) {
                if (picture.has(c)) function(c, x, y);
            }
        }
    }
}

Picture turnedRight(const Picture& picture) {
    const Shape shape = shapeOf(picture);
    Picture turned = plainPicture({shape.height, shape.width, shape.channels, shape.bytes});
    forEachSample(picture, [&](int c, int x, int y) {
        turned.set(c, shape.height - 1 - y, x, picture.get(c, x, y));
    });
    return turned;
}

Picture mirrored(const Picture& picture) {
    Picture result = plainPicture(shapeOf(picture));
    forEachSample(picture, [&](int c, int x, int y) {
        result.set(c, picture.record.width - 1 - x, y, picture.get(c, x, y));
    });
    return result;
}

constexpr int kTurns = 4;

}  // namespace

Picture plainPicture(const Shape& shape) { return Picture::inForm("cells", shape); }

Shape shapeOf(const Picture& picture) {
    const VORN_ChunkyBuffer& record = picture.record;
    return {record.width, record.height, record.channels, record.bytesPerChannel};
}

Picture loadersPicture(const std::string& fileName) {
    const WishedPicture wished(fileName);
    Picture picture = plainPicture({wished.width, wished.height, wished.channels, wished.bytes});
    forEachSample(picture,
                  [&](int c, int x, int y) { picture.set(c, x, y, wished.sample(c, x, y)); });
    return picture;
}

Picture loadersPalette(const std::string& fileName) {
    const WishedPicture wished(fileName);
    Picture palette = plainPicture({wished.palette, 1, 3, wished.paletteBytes});
    forEachSample(palette, [&](int c, int x, int) { palette.set(c, x, 0, wished.entry(c, x)); });
    return palette;
}

Picture reoriented(const Picture& picture, int from, int to) {
    Picture result = picture.clone();
    const auto turn = [&result](int times) {
        for (; times > 0; --times) result = turnedRight(result);
    };
    turn((kTurns - from % kTurns) % kTurns);
    if ((from >= kTurns) != (to >= kTurns)) result = mirrored(result);
    turn(to % kTurns);
    return result;
}

Picture inMemoryOf(const Picture& pattern, const Picture& source) {
    Picture result = pattern.clone();
    forEachSample(result, [&](int c, int x, int y) { result.set(c, x, y, source.get(c, x, y)); });
    return result;
}

Picture converted(const Picture& pattern, const Picture& source, int code, const Picture* palette) {
    Picture result = pattern.clone();
    for (int y = 0; y < pattern.record.height; ++y)
        vorn::test::slowLineCopy(source, result, y, y, code, palette);
    return result;
}

testing::AssertionResult same(const Picture& actual, const Picture& expected) {
    if (actual.memory == expected.memory) return testing::AssertionSuccess();
    testing::AssertionResult result = testing::AssertionFailure();
    bool found = false;
    forEachSample(expected, [&](int c, int x, int y) {
        if (found || actual.get(c, x, y) == expected.get(c, x, y)) return;
        found = true;
        result << "channel " << c << " at column " << x << " of line " << y << " is "
               << actual.get(c, x, y) << " instead of " << expected.get(c, x, y);
    });
    if (found) return result;
    const auto difference = std::mismatch(actual.memory.begin(), actual.memory.end(),
                                          expected.memory.begin(), expected.memory.end());
    return result << "byte " << difference.first - actual.memory.begin()
                  << ", which belongs to no sample, was written to";
}

VORN_ImageBuffer bufferOf(const Picture& picture) { return {VORN_BUFFER_CHUNKY, picture.record}; }
