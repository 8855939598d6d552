#include <gtest/gtest.h>

#include "tests/pixels/slow_line_copy.h"

namespace vorn::test {
namespace {

uint32_t correction(int source, int destination) {
    uint32_t code = 99;
    EXPECT_TRUE(VORN_L_SetColorSpaceCorrection(&code, source, destination));
    return code;
}

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
    for (int s = 0; s < 8; s++) {
        for (int d = 0; d < 8; d++) {
            EXPECT_EQ(correction(s, d), expected[s][d]) << s << " to " << d;
        }
    }
    EXPECT_EQ(correction(-1, 2), 0u);
    EXPECT_EQ(correction(8, 2), 0u);
    EXPECT_EQ(correction(1, 8), 0u);
    EXPECT_EQ(correction(7, -1), 7u);
}

TEST(LineCopy, ConvertsKnownColors) {
    using Values = std::vector<int>;
    EXPECT_EQ(convert(1, {255, 255, 255}, 1, 1, 1), Values({255}));
    EXPECT_EQ(convert(1, {255, 255, 254}, 1, 1, 2), Values({257 * 764 / 3}));
    EXPECT_EQ(convert(6, {255, 255, 255}, 1, 3, 1), Values({235, 128, 128}));
    EXPECT_EQ(convert(6, {0, 0, 0}, 1, 3, 1), Values({16, 128, 128}));
    EXPECT_EQ(convert(5, {235, 128, 128}, 1, 3, 1), Values({255, 255, 255}));
    EXPECT_EQ(convert(5, {16, 128, 128}, 1, 3, 1), Values({0, 0, 0}));
    EXPECT_EQ(convert(5, {240, 128, 128}, 1, 3, 1), Values({255, 255, 255}));
    EXPECT_EQ(convert(3, {235, 128, 128}, 1, 1, 1), Values({255}));
    EXPECT_EQ(convert(3, {16, 128, 128}, 1, 1, 1), Values({0}));
    EXPECT_EQ(convert(3, {240, 128, 128}, 1, 1, 1), Values({255}));
    EXPECT_EQ(convert(2, {200}, 1, 3, 2), Values({51400, 51400, 51400}));
    EXPECT_EQ(convert(0, {0x12AB}, 2, 1, 1), Values({0x12}));
}

TEST(LineCopy, ClampsColorsOutsideTheVideoRanges) {
    using Values = std::vector<int>;
    // Blue alone would leave 32 bits here.
    EXPECT_EQ(convert(5, {65535, 65535, 65535}, 2, 3, 2), Values({65535, 32184, 65535}));
    EXPECT_EQ(convert(5, {0, 0, 0}, 2, 3, 2), Values({0, 39646, 0}));
    EXPECT_EQ(convert(3, {65535, 0, 0}, 2, 1, 2), Values({65535}));
    EXPECT_EQ(convert(5, {255, 255, 0}, 1, 3, 2)[2], 65535);
}

TEST(LineCopy, LetsAlphaFollowTheColors) {
    EXPECT_EQ(convert(1, {30, 60, 90, 77}, 1, 2, 1), std::vector<int>({60, 77}));
    EXPECT_EQ(convert(2, {9, 77}, 1, 4, 1), std::vector<int>({9, 9, 9, 77}));
}

TEST(LineCopy, CopiesPlainlyWhenTheBuffersDoNotSuitTheConversion) {
    EXPECT_EQ(convert(1, {5, 6}, 1, 2, 1), std::vector<int>({5, 6}));
    EXPECT_EQ(convert(9, {5, 6, 7}, 1, 3, 1), std::vector<int>({5, 6, 7}));
}

TEST(LineCopy, WritesNothingWithoutAPalette) {
    EXPECT_EQ(convert(7, {5}, 1, 2, 1), std::vector<int>({0xA5, 0xA5}));
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

TEST(LineCopy, CopiesEveryPairOfStandardLayouts) {
    Random random(7);
    const int most[] = {8, 4, 3, 8, 4, 3};
    for (int pair = 0; pair < 36; pair++) {
        const int in = pair / 6, out = pair % 6;
        Picture source = Picture::standard(in + 1, 33, 2, most[in]);
        Picture destination = Picture::standard(out + 1, 33, 2, most[out]);
        source.fill(random);
        Picture expected = destination.clone();
        slowLineCopy(source, expected, 1, 0, 0, nullptr);
        VORN_L_CopyCBtoCB(&source.record, &destination.record, 1, 0, 0, nullptr);
        EXPECT_EQ(destination.memory, expected.memory) << in + 1 << " to " << out + 1;
    }
}

TEST(LineCopy, PutsLinesIntoADataFormatAndTakesThemOut) {
    Random random(8);
    Picture picture = Picture::standard(DF_Chunky3x8, 10, 2, 3);
    picture.fill(random);
    VORN_DataFormat format{DF_LineInterleaved16, 10, 2, 3, 0, 0, {}, {}, {}, {}};
    VORN_L_DataFormatMacroSetup(&format);
    std::vector<uint8_t> block(120);
    Picture back = picture.clone();
    for (int y = 0; y < 2; y++) {
        VORN_L_CopyChunkyBufferToDataFormat(&picture.record, &format, block.data(), y, y, 0,
                                            nullptr);
        back.record.width = 10;
        for (int c = 0; c < 3; c++) {
            back.set(c, 4, y, 0);
        }
        VORN_L_CopyDataFormatToChunkyBuffer(&format, block.data(), &back.record, y, y, 0, nullptr);
    }
    EXPECT_EQ(back.memory, picture.memory);
    EXPECT_EQ(block[0], picture.get(0, 0, 0));
    EXPECT_EQ(block[60 + 20 + 1], picture.get(1, 0, 1));
}

}  // namespace
}  // namespace vorn::test
