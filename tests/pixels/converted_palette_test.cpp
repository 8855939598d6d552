#include "pixels/converted_palette.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/pixels/transfer_rig.h"

namespace vorn::test {
namespace {

// An ITAG_Palette item: colour space, record, entries.
Bytes paletteItem(int colorSpace, const VORN_DataFormat& format, const Bytes& entries) {
    Bytes data(132);
    std::memcpy(data.data(), &colorSpace, 4);
    std::memcpy(data.data() + 4, &format, sizeof format);
    data.insert(data.end(), entries.begin(), entries.end());
    return MessageBytes().data(ITAG_Palette, data.data(), data.size()).unfinished();
}

Owned<VORN_ChunkyBuffer> convert(const Bytes& item, int bytes, int channels, int target) {
    return Owned<VORN_ChunkyBuffer>(VORN_L_ConvertPalette(
        reinterpret_cast<const VORN_TagItem*>(item.data()), bytes, channels, 0, target));
}

VORN_DataFormat rgbEntries(int count) {
    VORN_DataFormat format{};
    format.layout = DF_Chunky3x8;
    format.width = count;
    format.height = 1;
    format.channels = 3;
    VORN_L_DataFormatMacroSetup(&format);
    return format;
}

TEST(ConvertedPalette, HoldsRunsInTheHostsColorsAndSampleSize) {
    const Bytes item = paletteItem(VORN_CS_RGB, rgbEntries(2), {10, 20, 30, 255, 255, 255});
    const auto rgb = convert(item, 2, 3, VORN_CS_RGB);
    ASSERT_NE(rgb, nullptr);
    EXPECT_EQ(rgb->width, 2);
    EXPECT_EQ(rgb->pixelStep[1], 2);
    uint16_t green[2];
    std::memcpy(green, rgb->channelPlace[1], sizeof green);
    EXPECT_EQ(green[0], 20 * 257);
    EXPECT_EQ(green[1], 65535);

    const auto gray = convert(item, 1, 1, VORN_CS_GRAY);
    ASSERT_NE(gray, nullptr);
    EXPECT_EQ(gray->channelPlace[0][0], 20);
    EXPECT_EQ(gray->channelPlace[0][1], 255);
}

TEST(ConvertedPalette, RefusesItemsThatAreNotInOrder) {
    const VORN_DataFormat good = rgbEntries(2);
    const auto refused = [](const VORN_DataFormat& format, size_t entryBytes) {
        return convert(paletteItem(VORN_CS_RGB, format, Bytes(entryBytes)), 1, 3, VORN_CS_RGB) ==
               nullptr;
    };
    EXPECT_FALSE(refused(good, 8));
    EXPECT_TRUE(refused(good, 4)) << "entries are cut off";

    VORN_DataFormat bad = good;
    bad.width = 65536;
    EXPECT_TRUE(refused(bad, 8));
    bad.width = std::numeric_limits<int32_t>::max();
    EXPECT_TRUE(refused(bad, 8));
    bad = good;
    bad.channels = 9;
    EXPECT_TRUE(refused(bad, 8));
    bad = good;
    bad.pixelStep[2] = -3;
    EXPECT_TRUE(refused(bad, 8));
    bad = good;
    bad.channelPlace[0] = 0xFFFFFFF0u;
    EXPECT_TRUE(refused(bad, 8));
    bad = good;
    bad.bytesPerChannel = 0;
    EXPECT_TRUE(refused(bad, 8));

    for (size_t size : {0u, 4u, 128u}) {
        const Bytes data(size);
        EXPECT_EQ(
            convert(MessageBytes().data(ITAG_Palette, data.data(), size).unfinished(), 1, 3, 2),
            nullptr);
    }
    EXPECT_EQ(VORN_L_ConvertPalette(nullptr, 1, 3, 0, VORN_CS_RGB), nullptr);
    const Bytes item = paletteItem(VORN_CS_RGB, good, Bytes(8));
    EXPECT_EQ(convert(item, 1, 0, VORN_CS_NONE), nullptr);
    EXPECT_EQ(convert(item, 1, 9, VORN_CS_RGB), nullptr);
}

}  // namespace
}  // namespace vorn::test
