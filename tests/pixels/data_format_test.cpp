#include "pixels/data_format.h"

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <cstring>
#include <limits>
#include <vector>

#include "support/memory.h"
#include "tests/pixels/picture.h"

namespace vorn::test {
namespace {

VORN_DataFormat format(int layout, int width, int channels, int bytes = 1) {
    return {layout, width, 1, channels, bytes, 0, {}, {}, {}, {}};
}

template <class Array>
std::vector<int64_t> values(const Array& array, int count) {
    return {array, array + count};
}

using Values = std::vector<int64_t>;

TEST(DataFormat, FillsInCellsAndRunsAndKeepsTheRest) {
    const struct {
        int layout, channels;
        Values pixelSteps, lineSteps, places, bits;
    } cases[] = {
        {DF_Chunky3x8, 3, {3, 3, 3, 77}, {30, 30, 30, 0}, {100, 101, 102, 0}, {8, 12, 8, 0}},
        {DF_Chunky4x16, 2, {8, 8, 0, 77}, {80, 80, 0, 0}, {100, 102, 0, 0}, {16, 12, 0, 0}},
        {DF_LineInterleaved16, 2, {2, 2, 0, 77}, {40, 40, 0, 0}, {100, 120, 0, 0}, {16, 12, 0, 0}},
        {DF_Explicit, 2, {0, 0, 0, 77}, {0, 0, 0, 0}, {100, 0, 0, 0}, {8, 12, 0, 0}},
        {7, 2, {0, 0, 0, 77}, {0, 0, 0, 0}, {100, 0, 0, 0}, {8, 12, 0, 0}},
    };
    for (const auto& c : cases) {
        VORN_DataFormat made = format(c.layout, 10, c.channels);
        made.pixelStep[3] = 77;
        made.channelPlace[0] = 100;
        made.bitsPerChannel[1] = 12;
        VORN_L_DataFormatMacroSetup(&made);
        EXPECT_EQ(values(made.pixelStep, 4), c.pixelSteps) << c.layout;
        EXPECT_EQ(values(made.lineStep, 4), c.lineSteps) << c.layout;
        EXPECT_EQ(values(made.channelPlace, 4), c.places) << c.layout;
        EXPECT_EQ(values(made.bitsPerChannel, 4), c.bits) << c.layout;
    }
}

TEST(DataFormat, NeverTouchesMoreThanEightChannels) {
    struct {
        VORN_DataFormat made;
        uint8_t behind[64];
    } record{format(DF_LineInterleaved8, 2'000'000'000, 2'000'000'000), {}};
    for (const int32_t channels : {2'000'000'000, -5}) {
        record.made.channels = channels;
        VORN_L_DataFormatMacroSetup(&record.made);
        EXPECT_EQ(values(record.behind, 64), Values(64, 0));
        EXPECT_FALSE(VORN_L_CheckDataFormat(&record.made));
    }
}

TEST(DataFormat, SetsUpAddressesBehindTheFirstChannel) {
    Picture cells = Picture::standard(DF_Chunky3x8, 10, 1, 3);
    const VORN_ChunkyBuffer expected = cells.record;
    for (int c = 1; c < 3; c++) cells.drop(c);
    VORN_L_ChunkyBufferMacroSetup(&cells.record);
    EXPECT_EQ(values(cells.record.lineStep, 3), values(expected.lineStep, 3));
    EXPECT_EQ(cells.record.channelPlace[2], expected.channelPlace[2]);
    cells.drop(0);
    VORN_L_ChunkyBufferMacroSetup(&cells.record);
    EXPECT_EQ(cells.record.channelPlace[2], nullptr) << "nothing lies behind an absent channel";
}

TEST(DataFormat, ChecksSizes) {
    const auto passes = [](int width, int height, int channels, int bytes) {
        VORN_DataFormat made = format(0, width, channels, bytes);
        made.height = height;
        return VORN_L_CheckDataFormat(&made) != 0;
    };
    EXPECT_TRUE(passes(65536, 65536, 8, 2));
    EXPECT_TRUE(passes(1, 1, 1, 1));
    const int refused[][4] = {{65537, 1, 1, 1}, {1, 65537, 1, 1}, {0, 1, 1, 1}, {1, 0, 1, 1},
                              {1, 1, 9, 1},     {1, 1, 0, 1},     {1, 1, 1, 3}, {1, 1, 1, 0}};
    for (const auto& r : refused) EXPECT_FALSE(passes(r[0], r[1], r[2], r[3])) << &r - refused;
}

TEST(LinesInside, CountsTheLastSampleAndNotOneMoreAlsoWithNegativeSteps) {
    VORN_DataFormat runs = format(DF_LineInterleaved16, 10, 2), backwards = format(0, 10, 1);
    VORN_L_DataFormatMacroSetup(&runs);
    backwards.pixelStep[0] = -1;
    backwards.lineStep[0] = -10;
    backwards.channelPlace[0] = 29;
    VORN_DataFormat below = backwards, wide = runs;
    below.channelPlace[0] = 28;
    wide.bytesPerChannel = 9;
    const struct {
        const VORN_DataFormat& format;
        int lines;
        uint64_t bytes;
        bool inside;
    } cases[] = {{runs, 3, 120, true},     {runs, 3, 119, false},     {runs, 4, 120, false},
                 {runs, 0, 0, true},       {runs, -1, 120, false},    {wide, 1, 120, false},
                 {backwards, 3, 30, true}, {backwards, 4, 30, false}, {backwards, 3, 29, false},
                 {below, 3, 30, false}};
    for (const auto& c : cases)
        EXPECT_EQ(linesInside(c.format, c.lines, c.bytes), c.inside) << &c - cases;
}

TEST(LinesInside, SurvivesStepsThatWouldOverflow) {
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    VORN_DataFormat made = format(0, 65536, 1, 2);
    for (const int32_t step : {kMost, -kMost - 1, 0}) {
        made.pixelStep[0] = made.lineStep[0] = step;
        made.channelPlace[0] = 0xFFFFFFFFu;
        EXPECT_FALSE(linesInside(made, kMost, 98304));
        EXPECT_FALSE(linesInside(made, 1, 98304));
    }
    made.channelPlace[0] = 98302;
    EXPECT_TRUE(linesInside(made, kMost, 98304)) << "all lines are the same sample";
}

struct PaletteDeleter {
    void operator()(VORN_Palette* palette) const { VORN_H_FreePaletteData(palette); }
};
using PalettePointer = std::unique_ptr<VORN_Palette, PaletteDeleter>;

PalettePointer paletteOf(const Picture& entries) {
    return PalettePointer(VORN_H_CreatePaletteData(&entries.record, VORN_CS_RGB));
}

// Whatever the buffer's code says, the entries fit the record and none covers another.
TEST(Palette, TakesRunsWhereCellsWouldNotFit) {
    Random random(2);
    for (int i = 0; i < 2 * 8 * 9; i++) {
        const int bytes = 1 + i % 2, channels = 1 + i / 2 % 8, layout = i / 16 - 1;
        SCOPED_TRACE(testing::Message() << layout << ", " << channels << " channels of " << bytes);
        Picture entries = Picture::standard(lineInterleavedLayout(bytes), 5, 1, channels);
        entries.fill(random);
        entries.record.layout = layout;
        const PalettePointer palette = paletteOf(entries);
        ASSERT_NE(palette, nullptr);
        const auto size = static_cast<uint32_t>(5 * channels * bytes);
        EXPECT_EQ(palette->byteCount, 132 + size);
        EXPECT_EQ(palette->colorSpace, 2u);
        if (layout == 0 && channels == 3) {
            EXPECT_EQ(palette->format.layout, bytes == 1 ? DF_Chunky3x8 : DF_Chunky3x16);
        }
        EXPECT_EQ(palette->format.bytesPerChannel, bytes);
        ASSERT_TRUE(linesInside(palette->format, 1, size));
        Picture made(palette->format, size);
        std::memcpy(made.memory.data() + 64, palette.get() + 1, size);
        for (int at = 0; at < 5 * channels; at++)
            ASSERT_EQ(made.get(at / 5, at % 5, 0), entries.get(at / 5, at % 5, 0));
    }
}

int32_t lastError() { return VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)); }

TEST(Palette, RefusesMissingAndImpossibleEntries) {
    EXPECT_EQ(VORN_H_CreatePaletteData(nullptr, VORN_CS_RGB), nullptr);
    EXPECT_EQ(lastError(), 60);
    Picture entries = Picture::standard(DF_LineInterleaved8, 4, 1, 3);
    failAllocation(1);
    EXPECT_EQ(paletteOf(entries), nullptr);
    failAllocation(0);
    EXPECT_EQ(lastError(), 17);
    entries.record.channels = 9;
    EXPECT_EQ(paletteOf(entries), nullptr);
    EXPECT_EQ(lastError(), 60);
}

TEST(ImageBuffer, IsClearedAndKnowsItsType) {
    VORN_ImageBuffer* buffer = VORN_H_AllocateImageBuffer(5);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->type, 5);
    EXPECT_EQ(buffer->chunky.channelPlace[7], nullptr);
    VORN_H_FreeImageBuffer(buffer);
    failAllocation(1);
    EXPECT_EQ(VORN_H_AllocateChunkyImageBuffer(), nullptr);
    failAllocation(0);
    EXPECT_EQ(lastError(), 17);
}

}  // namespace
}  // namespace vorn::test
