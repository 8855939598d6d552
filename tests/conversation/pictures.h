// Pictures that go through a conversation, what they should have become, and where they first
// differ.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>

#include <string>

#include "tests/modules/wished_picture.h"
#include "tests/pixels/picture.h"

using vorn::test::Picture;
using vorn::test::Random;
using vorn::test::Shape;

// A picture in ordinary cells.
Picture plainPicture(const Shape& shape);

// The picture that test_loader makes for a file name, in the loader's own orientation and colours.
Picture loadersPicture(const std::string& fileName);

Shape shapeOf(const Picture& picture);

// The same picture as another orientation shows it. 0 to 3 are quarter turns (each to the right), 4
// to 7 their mirror images: 4 is 0 with left and right exchanged, and each further one is turned
// once more.
Picture reoriented(const Picture& picture, int from, int to);

// The samples of `source` in memory like `pattern`'s, all else as it is there.
Picture inMemoryOf(const Picture& pattern, const Picture& source);

// What a read from `source` into memory like `pattern`'s must give: channels, sample size and
// colours converted by a conversion code.
Picture converted(const Picture& pattern, const Picture& source, int code, const Picture* palette);

// A palette of test_loader's as one line of pixels.
Picture loadersPalette(const std::string& fileName);

// Whether two pictures of the same memory layout are the same to the last byte, gaps and guards
// included. A failure names the first sample that differs.
testing::AssertionResult same(const Picture& actual, const Picture& expected);

VORN_ImageBuffer bufferOf(const Picture& picture);
