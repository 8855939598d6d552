#include <gtest/gtest.h>

#include "tests/pixels/slow_line_copy.h"

namespace vorn::test {
namespace {

// One pixel through a conversion.
std::vector<int> convert(
    int code, std::vector<int> in, int inBytes, int outChannels, int outBytes) {
    const int channels = static_cast<int>(in.size());
    Picture source = Picture::standard(inBytes == 2 ? 4 : 1, 1, 1, channels);
    Picture destination = Picture::standard(outBytes == 2 ? 4 : 1, 1, 1, outChannels);
    for (int c = 0; c < channels; c++) {
        source.set(c, 0, 0, in[static_cast<size_t>(c)]);
    }
    VORN_L_CopyCBtoCB(&source.record, &destination.record, 0, 0, static_cast<uint32_t>(code),
                      nullptr);
    std::vector<int> out;
    for (int c = 0; c < outChannels; c++) {
        out.push_back(destination.get(c, 0, 0));
    }
    return out;
}

Picture palettePicture(Random& random, int bytes) {
    Picture palette =
        Picture::standard(bytes == 2 ? 4 : 1, pick(random, 1, 300), 1, pick(random, 1, 4));
    palette.fill(random);
    if (pick(random, 0, 5) == 0) {
        palette.drop(pick(random, 0, palette.record.channels - 1));
    }
    return palette;
}

void dropSome(Random& random, Picture& picture) {
    for (int c = 0; c < picture.record.channels; c++) {
        if (pick(random, 0, 7) == 0) {
            picture.drop(c);
        }
    }
}

TEST(ColorCorrection, ConvertsOnlyBetweenGrayRgbAndYuv601AndOutOfPalettes) {
    const uint32_t expected[8][8] = {
        {0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 2, 0, 4, 0, 0, 0}, {0, 1, 0, 0, 6, 0, 0, 0},
        {0, 0, 0, 0, 0, 0, 0, 0}, {0, 3, 5, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0},
        {0, 0, 0, 0, 0, 0, 0, 0}, {7, 7, 7, 7, 7, 7, 7, 0},
    };
    for (int s = -1; s < 9; s++) {
        for (int d = -1; d < 9; d++) {
            const bool known = s >= 0 && s < 8 && d >= 0 && d < 8;
            uint32_t code = 99;
            EXPECT_TRUE(VORN_L_SetColorSpaceCorrection(&code, s, d));
            EXPECT_EQ(code, known ? expected[s][d] : s == 7 ? 7u : 0u) << s << " to " << d;
        }
    }
}

TEST(LineCopy, ConvertsKnownPixels) {
    const struct {
        int code;
        std::vector<int> in;
        int inBytes;
        std::vector<int> out;
        int outBytes;
    } cases[] = {
        {1, {255, 255, 255}, 1, {255}, 1},
        {1, {255, 255, 254}, 1, {257 * 764 / 3}, 2},
        {6, {255, 255, 255}, 1, {235, 128, 128}, 1},
        {6, {0, 0, 0}, 1, {16, 128, 128}, 1},
        {5, {235, 128, 128}, 1, {255, 255, 255}, 1},
        {5, {16, 128, 128}, 1, {0, 0, 0}, 1},
        {5, {240, 128, 128}, 1, {255, 255, 255}, 1},
        {3, {235, 128, 128}, 1, {255}, 1},
        {3, {16, 128, 128}, 1, {0}, 1},
        {2, {200}, 1, {51400, 51400, 51400}, 2},
        {0, {0x12AB}, 2, {0x12}, 1},
        // Outside the video ranges; blue alone would leave 32 bits in the first.
        {5, {65535, 65535, 65535}, 2, {65535, 32184, 65535}, 2},
        {5, {0, 0, 0}, 2, {0, 39646, 0}, 2},
        {3, {65535, 0, 0}, 2, {65535}, 2},
        // Alpha follows the colours.
        {1, {30, 60, 90, 77}, 1, {60, 77}, 1},
        {2, {9, 77}, 1, {9, 9, 9, 77}, 1},
        // Buffers that don't suit the conversion are copied, and nothing is done without a palette.
        {1, {5, 6}, 1, {5, 6}, 1},
        {9, {5, 6, 7}, 1, {5, 6, 7}, 1},
        {7, {5}, 1, {0xA5, 0xA5}, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(convert(c.code, c.in, c.inBytes, static_cast<int>(c.out.size()), c.outBytes),
                  c.out)
            << &c - cases;
    }
}

// Every byte of the destination's memory, guards included, is as a sample-by-sample copy leaves it.
void compareWithSlowCopy(Random& random, int code) {
    Shape in{pick(random, 1, 70), pick(random, 1, 3), pick(random, 1, 8), pick(random, 1, 2)};
    if (pick(random, 0, 30) == 0) {
        in.width = pick(random, 500, 1600);
    }
    Shape out{pick(random, 1, in.width), pick(random, 1, 3), pick(random, 1, 8),
              pick(random, 1, 2)};
    if (pick(random, 0, 2) == 0) {
        in.channels = pick(random, 1, 4);
        out.channels = pick(random, 1, 4);
    }
    Picture source = Picture::any(random, in);
    Picture destination = Picture::any(random, out);
    source.fill(random);
    destination.fill(random);
    dropSome(random, source);
    dropSome(random, destination);
    const Picture palette = palettePicture(random, out.bytes);
    const int from = pick(random, 0, in.height - 1);
    const int to = pick(random, 0, out.height - 1);

    Picture expected = destination.clone();
    slowLineCopy(source, expected, from, to, code, &palette);
    VORN_L_CopyCBtoCB(&source.record, &destination.record, from, to, static_cast<uint32_t>(code),
                      &palette.record);
    ASSERT_EQ(destination.memory, expected.memory)
        << "code " << code << ", " << in.width << "x" << in.channels << "x" << in.bytes << " to "
        << out.width << "x" << out.channels << "x" << out.bytes;
}

class LineCopyAgainstSlowCopy : public testing::TestWithParam<int> {};

TEST_P(LineCopyAgainstSlowCopy, LeavesTheSameBytes) {
    Random random(1000u + static_cast<unsigned>(GetParam()));
    for (int round = 0; round < 1500 && !HasFatalFailure(); round++) {
        SCOPED_TRACE(round);
        compareWithSlowCopy(random, GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Conversions, LineCopyAgainstSlowCopy, testing::Range(0, 8));

}  // namespace
}  // namespace vorn::test
