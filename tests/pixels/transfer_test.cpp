// The parts of a transfer that whole conversations can't reach, or not one by one.
#include <gtest/gtest.h>

#include "pixels/orientation.h"
#include "pixels/write_format.h"
#include "tests/pixels/picture.h"
#include "tests/scratch_home.h"
#include "tests/transport/scripted_peer.h"

namespace vorn::test {
namespace {

VORN_DataFormat rgbEntries(int count) { return formatOf(DF_Chunky3x8, count, 1, 3); }

Bytes paletteItem(const VORN_DataFormat& format, const Bytes& entries) {
    return MessageBytes().palette(format, entries).unfinished();
}

Owned<VORN_ChunkyBuffer> convert(const Bytes& item, int bytes, int channels, int target) {
    return Owned<VORN_ChunkyBuffer>(VORN_L_ConvertPalette(
        reinterpret_cast<const VORN_TagItem*>(item.data()), bytes, channels, 0, target));
}

TEST(ConvertedPalette, HoldsRunsInTheHostsColorsAndSampleSize) {
    const Bytes item = paletteItem(rgbEntries(2), {10, 20, 30, 255, 255, 255});
    const auto rgb = convert(item, 2, 3, VORN_CS_RGB);
    ASSERT_NE(rgb, nullptr);
    EXPECT_EQ(rgb->width, 2);
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
    const auto refused = [](const std::function<void(VORN_DataFormat&)>& spoil, size_t bytes = 8) {
        VORN_DataFormat format = rgbEntries(2);
        spoil(format);
        return convert(paletteItem(format, Bytes(bytes)), 1, 3, VORN_CS_RGB) == nullptr;
    };
    EXPECT_FALSE(refused([](auto&) {}));
    EXPECT_TRUE(refused([](auto&) {}, 4)) << "entries are cut off";
    const std::function<void(VORN_DataFormat&)> spoils[] = {
        [](auto& format) { format.width = 65536; }, [](auto& format) { format.channels = 9; },
        [](auto& format) { format.pixelStep[2] = -3; },
        [](auto& format) { format.channelPlace[0] = 0xFFFFFFF0u; },
        [](auto& format) { format.bytesPerChannel = 0; }};
    for (const auto& spoil : spoils) EXPECT_TRUE(refused(spoil)) << &spoil - spoils;
    const Bytes shortItem = MessageBytes().data(ITAG_Palette, Bytes(128).data(), 128).unfinished();
    EXPECT_EQ(convert(shortItem, 1, 3, VORN_CS_RGB), nullptr);
    EXPECT_EQ(VORN_L_ConvertPalette(nullptr, 1, 3, 0, VORN_CS_RGB), nullptr);
    const Bytes item = paletteItem(rgbEntries(2), Bytes(8));
    EXPECT_EQ(convert(item, 1, 0, VORN_CS_NONE), nullptr);
    EXPECT_EQ(convert(item, 1, 9, VORN_CS_RGB), nullptr);
}

TEST(Orientation, KnowsEightOrientationsAndLeavesAbsentChannelsAbsent) {
    ScriptedPeer peer;
    const std::pair<int, int> pairs[] = {{-1, 2}, {2, -1}, {8, 0}, {0, 8}, {3, 3}};
    for (const auto& [source, target] : pairs) {
        EXPECT_FALSE(VORN_L_SetOrientationCorrection(peer.image(), source, target));
        EXPECT_EQ(peer.image()->orientation, nullptr);
    }
    Picture picture = Picture::standard(DF_Chunky3x8, 4, 6, 3);
    picture.drop(1);
    for (auto rewrite : {VORN_L_MirrorColumns, VORN_L_MirrorLines, VORN_L_TurnA, VORN_L_TurnB}) {
        rewrite(picture.record);
        EXPECT_EQ(picture.record.channelPlace[1], nullptr);
    }
}

TEST(PrepareTransfer, NeedsAPossibleSizeAndAColorSpaceThatIsKnown) {
    const auto error = [](int type, int width, const std::string& name = "") {
        ScriptedPeer peer(type);
        VORN_H_ImageVaSetTags(peer.image(), MTAG_ModuleName, VORN_Word(name.c_str()), ITAG_Width,
                              VORN_Word(width), ITAG_ColorSpace, VORN_Word(VORN_CS_RGB), TAG_End);
        if (width != 3)
            ImageVaAddTags(peer.image(), ITAG_Width, VORN_Word(3), ITAG_Height, VORN_Word(3),
                           TAG_End);
        else if (type == VORN_SAVER)
            VORN_H_ImageVaSetTags(peer.image(), ITAG_Height, VORN_Word(3), TAG_End);
        const bool prepared = VORN_L_PrepareTransfer(peer.image());
        EXPECT_EQ(prepared, peer.errorCode() == 0);
        return peer.errorCode();
    };
    EXPECT_EQ(error(VORN_LOADER, 3), 34);
    EXPECT_EQ(error(VORN_LOADER, 0), 26);
    EXPECT_EQ(error(VORN_LOADER, -1), 26);
    EXPECT_EQ(error(VORN_LOADER, 65537), 26);
    EXPECT_EQ(error(VORN_LOADER, 65536), 0);
    EXPECT_EQ(error(3, 3), 30);
    const ScratchHome home;
    home.write("Savers/odd.cap", "ColorSpaces=Lab\n");
    std::thread([&] {  // finds the home directory of this test
        EXPECT_EQ(error(VORN_SAVER, 3, home.path("Savers/odd")), 17);
        EXPECT_EQ(error(VORN_SAVER, 3, "no-such-file"), 0);
    })
        .join();
}

// What is made without a palette, whole conversations see.
TEST(BlockFormat, HasTheChannelsOfThePaletteAndTheAlphaBesideIt) {
    const Picture palette = Picture::standard(DF_LineInterleaved8, 2, 1, 3);
    for (const int channels : {1, 2}) {
        const Picture buffer = Picture::standard(DF_LineInterleaved16, 10, 1, channels);
        VORN_DataFormat format{};
        EXPECT_FALSE(makeBlockFormat(buffer.record, 7, nullptr, format)) << "nothing to look up in";
        ASSERT_TRUE(makeBlockFormat(buffer.record, 7, &palette.record, format));
        EXPECT_EQ(format.channels, 2 + channels);
        EXPECT_EQ(format.lineStep[0], 20 * format.channels);
        EXPECT_EQ(format.bitsPerChannel[0], 0);
    }
}

TEST(WriteLines, SendNothingThatTheAreaDoesNotHold) {
    ScriptedPeer peer(VORN_SAVER);
    peer.image()->hasProcess = true;
    Picture lines = Picture::standard(DF_Chunky3x8, 1000, 33, 3);
    EXPECT_EQ(VORN_L_WriteImageDataMaxSize(peer.image()), 97280);
    VORN_WriteState* state =
        VORN_L_ImageWriteChunkyBegin(peer.image(), &lines.record, nullptr, 0, nullptr);
    EXPECT_EQ(VORN_L_GetLineSize(state), 3000);
    EXPECT_EQ(VORN_L_ImageWriteLineChunky(state, &lines.record, 0), 0);
    EXPECT_EQ(peer.errorCode(), 29);
    VORN_L_ImageWriteChunkyEnd(state);
}

TEST(ReadImage, BelievesNoBlockThatBreaksTheProtocol) {
    const auto block = [](int lines, size_t bytes) {
        return MessageBytes()
            .number(ITAG_ReadWidth, 8)
            .number(ITAG_ReadHeight, lines)
            .data(ITAG_Data, Bytes(bytes).data(), bytes);
    };
    const struct {
        const char* what;
        Bytes message;
        int error;
    } cases[] = {
        {"no lines", block(0, 32).end(), 2},
        {"more lines than bytes", block(4, 28).end(), 5},
        {"a negative count", block(-1, 32).end(), 5},
        {"a huge count", block(0x7FFFFFFF, 32).end(), 5},
        {"no data", MessageBytes().number(ITAG_ReadWidth, 8).number(ITAG_ReadHeight, 4).end(), 5},
        {"no height", MessageBytes().number(ITAG_ReadWidth, 8).data(ITAG_Data, "", 1).end(), 5},
        {"no width", MessageBytes().number(ITAG_ReadHeight, 0).data(ITAG_Data, "", 1).end(), 5},
        {"an acknowledgement", acknowledgement(), 5},
        {"the end", block(4, 32).number(MTAG_Terminate, 1).end(), 4},
        {"an error", block(4, 32).error(2002, 1).end(), 2002},
        {"a short error", block(4, 32).item(MTAG_ErrorCode, 8).end(), 6},
        {"a list without an end", block(4, 32).item(ITAG_Width, 7).unfinished(), 5},
    };
    const FormatTag announced{.format = formatOf(DF_LineInterleaved8, 8, 4, 1)};
    for (const auto& c : cases) {
        Picture host = Picture::standard(DF_LineInterleaved8, 8, 4, 1);
        const Picture untouched = host.clone();
        ScriptedPeer peer;
        ImageVaAddTags(peer.image(), ITAG_DataFormat, VORN_Word(&announced), ITAG_Width,
                       VORN_Word(8), ITAG_Height, VORN_Word(4), TAG_End);
        const Bytes empty = MessageBytes().end();
        peer.takes().sends(empty).sends(c.message).takes().sends(empty).sends(acknowledgement());
        const VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, host.record};
        EXPECT_FALSE(
            peer.play([&] { return VORN_H_ImageVaReadData(peer.image(), &buffer, TAG_End) != 0; }));
        EXPECT_EQ(peer.errorCode(), c.error) << c.what;
        EXPECT_EQ(host.memory, untouched.memory) << c.what;
        EXPECT_FALSE(peer.image()->stuff.readHeld) << c.what;
        EXPECT_EQ(peer.image()->block.linesLeft, 0) << c.what;
    }
}

}  // namespace
}  // namespace vorn::test
