#include <gtest/gtest.h>

#include "tests/pixels/grid.h"
#include "tests/pixels/slow_line_copy.h"
#include "tests/pixels/transfer_rig.h"

namespace vorn::test {
namespace {

// Counts the calls of a transfer's callbacks; the user data word points at it.
struct Watch {
    std::vector<int> counts;
    int abortCalls = 0;
    int abortAt = 0;  // the call that is answered with "stop", 0: none

    static void meter(VORN_Image*, VORN_Word self, int32_t count) {
        reinterpret_cast<Watch*>(self)->counts.push_back(count);
    }
    static int32_t abort(VORN_Image*, VORN_Word self) {
        auto* watch = reinterpret_cast<Watch*>(self);
        return ++watch->abortCalls == watch->abortAt;
    }
};

bool read(ScriptedPeer& peer, const Picture& host) {
    const VORN_ImageBuffer buffer = imageBuffer(host);
    return peer.play([&] { return VORN_H_ImageVaReadData(peer.image(), &buffer, TAG_End) != 0; });
}

bool readWatched(ScriptedPeer& peer, const Picture& host, Watch& watch, bool metered) {
    const VORN_ImageBuffer buffer = imageBuffer(host);
    return peer.play([&] {
        return VORN_H_ImageVaReadData(
                   peer.image(), &buffer, metered ? ITAG_MeterCallback : TAG_SkipTag,
                   VORN_Word(&Watch::meter), ITAG_MeterCallbackUserData, VORN_Word(&watch),
                   ITAG_AbortCallback, VORN_Word(&Watch::abort), ITAG_AbortCallbackUserData,
                   VORN_Word(&watch), TAG_End) != 0;
    });
}

Picture expectedCopy(const ModulePicture& module, const Picture& host) {
    Picture expected = host.clone();
    const Picture source = module.picture();
    for (int y = 0; y < module.format.height; y++) {
        slowLineCopy(source, expected, y, y, 0, nullptr);
    }
    return expected;
}

TEST(ReadImage, BringsBlocksIntoTheHostsLayout) {
    Random random(11);
    ModulePicture module(DF_LineInterleaved16, 9, 5, 3);
    module.fill(random);
    Picture host = Picture::planes(random, {9, 5, 4, 1});
    const Picture expected = expectedCopy(module, host);
    ScriptedPeer peer;
    announce(peer.image(), module.format);
    peer.takes().sends(emptyReply()).sends(module.block(0, 3)).sends(module.block(3, 2));
    peer.sends(acknowledgement());
    EXPECT_TRUE(read(peer, host));
    EXPECT_EQ(host.memory, expected.memory);
    EXPECT_FALSE(peer.image()->ackOutstanding);
}

TEST(ReadImage, LeavesLinesBehindThePictureAlone) {
    Random random(12);
    ModulePicture module(DF_Chunky3x8, 4, 3, 3);
    module.fill(random);
    Picture host = Picture::standard(DF_Chunky3x8, 4, 2, 3);
    ModulePicture announced(DF_Chunky3x8, 4, 2, 3);
    ScriptedPeer peer;
    announce(peer.image(), announced.format);
    peer.takes().sends(emptyReply()).sends(module.block(0, 3)).sends(acknowledgement());
    EXPECT_TRUE(read(peer, host));
    EXPECT_EQ(peer.image()->block.linesLeft, 0);
    EXPECT_FALSE(peer.image()->stuff.readHeld);
}

TEST(ReadImage, TurnsEveryOrientationUpright) {
    const Grid upright = Grid::counted(3, 4);
    for (int pair = 0; pair < 64; pair++) {
        const int ofModule = pair / 8, ofHost = pair % 8;
        const Grid sent = upright.oriented(ofModule);
        const Grid wanted = upright.oriented(ofHost);
        ModulePicture module(DF_LineInterleaved8, sent.width, sent.height, 1);
        for (size_t i = 0; i < sent.values.size(); i++) {
            module.bytes[i] = static_cast<uint8_t>(sent.values[i]);
        }
        Picture host = Picture::standard(DF_Chunky3x8, wanted.width, wanted.height, 1);
        ScriptedPeer peer;
        announce(peer.image(), module.format);
        ImageVaAddTags(peer.image(), ITAG_Orientation, VORN_Word(ofModule), TAG_End);
        VORN_H_ImageVaSetTags(peer.image(), ITAG_Orientation, VORN_Word(ofHost), TAG_End);
        peer.takes().sends(emptyReply()).sends(module.block(0, 1));
        peer.sends(module.block(1, sent.height - 1)).sends(acknowledgement());
        ASSERT_TRUE(read(peer, host)) << ofModule << " to " << ofHost;
        Grid got{wanted.width, wanted.height};
        for (int i = 0; i < wanted.width * wanted.height; i++) {
            got.values.push_back(host.get(0, i % wanted.width, i / wanted.width));
        }
        ASSERT_EQ(got, wanted) << ofModule << " to " << ofHost;
    }
}

TEST(ReadImage, CallsTheMeterEvenly) {
    ModulePicture module(DF_LineInterleaved8, 2, 100, 1);
    Picture host = Picture::standard(DF_LineInterleaved8, 2, 100, 1);
    ScriptedPeer peer;
    announce(peer.image(), module.format);
    peer.takes().sends(emptyReply()).sends(module.block(0, 40)).sends(module.block(40, 60));
    peer.sends(acknowledgement());
    Watch watch;
    EXPECT_TRUE(readWatched(peer, host, watch, true));
    ASSERT_EQ(watch.counts.size(), 16u);
    EXPECT_EQ(watch.counts.front(), 1);
    EXPECT_EQ(watch.counts.back(), 16);
    EXPECT_EQ(watch.abortCalls, 2 + 16) << "before each block and after each tick";
}

TEST(ReadImage, StopsWhenTheApplicationWantsNoMore) {
    Random random(13);
    ModulePicture module(DF_LineInterleaved8, 6, 4, 1);
    module.fill(random);
    Picture host = Picture::standard(DF_LineInterleaved8, 6, 4, 1);
    ScriptedPeer peer;
    announce(peer.image(), module.format);
    peer.takes().sends(emptyReply()).sends(module.block(0, 2)).takes().sends(emptyReply());
    peer.sends(acknowledgement());
    Watch watch;
    watch.abortAt = 2;
    EXPECT_FALSE(readWatched(peer, host, watch, false));
    EXPECT_EQ(peer.errorCode(), 27);
    EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(peer.takenList(1), MTAG_Command)), CMD_Abort);
    EXPECT_EQ(host.get(0, 5, 1), module.bytes[11]);
    EXPECT_EQ(host.get(0, 0, 2), 0xA5);
}

TEST(ReadImage, StopsAtTheNextStepAfterAMeterCall) {
    ModulePicture module(DF_LineInterleaved8, 6, 40, 1);
    Picture host = Picture::standard(DF_LineInterleaved8, 6, 40, 1);
    ScriptedPeer peer;
    announce(peer.image(), module.format);
    peer.takes()
        .sends(emptyReply())
        .sends(module.block(0, 40))
        .takes()
        .sends(emptyReply())
        .sends(acknowledgement());
    Watch watch;
    watch.abortAt = 2;  // the first after a tick
    EXPECT_FALSE(readWatched(peer, host, watch, true));
    EXPECT_EQ(peer.errorCode(), 27);
    EXPECT_EQ(watch.counts.size(), 1u);
}

TEST(ReadImage, BelievesNoBlockThatBreaksTheProtocol) {
    const ModulePicture module(DF_LineInterleaved8, 8, 4, 1);
    const auto block = [](int lines, size_t bytes) {
        const Bytes data(bytes);
        return MessageBytes()
            .number(ITAG_ReadWidth, 8)
            .number(ITAG_ReadHeight, lines)
            .data(ITAG_Data, data.data(), bytes);
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
        {"an acknowledgement", acknowledgement(), 5},
        {"the end", block(4, 32).number(MTAG_Terminate, 1).end(), 4},
        {"an error", block(4, 32).error(2002, 1).end(), 2002},
        {"a list without an end", block(4, 32).item(ITAG_Width, 7).unfinished(), 5},
    };
    for (const auto& c : cases) {
        Picture host = Picture::standard(DF_LineInterleaved8, 8, 4, 1);
        const Picture untouched = host.clone();
        ScriptedPeer peer;
        announce(peer.image(), module.format);
        peer.takes()
            .sends(emptyReply())
            .sends(c.message)
            .takes()
            .sends(emptyReply())
            .sends(acknowledgement());
        EXPECT_FALSE(read(peer, host)) << c.what;
        EXPECT_EQ(peer.errorCode(), c.error) << c.what;
        EXPECT_EQ(host.memory, untouched.memory) << c.what;
        EXPECT_FALSE(peer.image()->stuff.readHeld) << c.what;
        EXPECT_EQ(peer.image()->block.linesLeft, 0) << c.what;
    }
}

TEST(ReadImage, FollowsTheModulesOwnStepsInsideTheBlockOnly) {
    ModulePicture module(DF_LineInterleaved8, 8, 4, 1);
    module.format.layout = 0;
    module.format.channelPlace[0] = 31;
    module.format.pixelStep[0] = -1;
    module.format.lineStep[0] = -9;  // the last line begins before the block
    Picture host = Picture::standard(DF_LineInterleaved8, 8, 4, 1);
    ScriptedPeer peer;
    announce(peer.image(), module.format);
    const Bytes data(32);
    peer.takes().sends(emptyReply());
    peer.sends(MessageBytes()
                   .number(ITAG_ReadWidth, 8)
                   .number(ITAG_ReadHeight, 4)
                   .data(ITAG_Data, data.data(), 32)
                   .end());
    peer.takes().sends(emptyReply()).sends(acknowledgement());
    EXPECT_FALSE(read(peer, host));
    EXPECT_EQ(peer.errorCode(), 5);
}

TEST(ReadImage, RefusesBeforeTheLoaderIsAsked) {
    Picture host = Picture::standard(DF_LineInterleaved8, 8, 4, 1);
    ScriptedPeer peer;
    announce(peer.image(), ModulePicture(DF_LineInterleaved8, 8, 4, 1).format);
    VORN_ImageBuffer buffer = imageBuffer(host);
    buffer.type = 2;
    EXPECT_FALSE(VORN_H_ImageVaReadData(peer.image(), &buffer, TAG_End));
    EXPECT_EQ(peer.errorCode(), 60);
    EXPECT_FALSE(peer.image()->ackOutstanding);
}

// Palette indices 0, 1 and (beyond the two entries) 2.
class ReadIndexed : public testing::Test {
  protected:
    ReadIndexed() : module_(DF_LineInterleaved8, 3, 1, 1) {
        module_.bytes = {0, 1, 2};
        announce(peer_.image(), module_.format);
        ImageVaAddTags(peer_.image(), ITAG_ColorSpace, VORN_Word(VORN_CS_CMAPPED), TAG_End);
        VORN_H_ImageVaSetTags(peer_.image(), ITAG_ColorSpace, VORN_Word(VORN_CS_RGB), TAG_End);
    }

    ModulePicture module_;
    Picture host_ = Picture::standard(DF_Chunky3x8, 3, 1, 3);
    ScriptedPeer peer_;
};

TEST_F(ReadIndexed, LooksColorsUp) {
    Picture entries = Picture::standard(DF_Chunky3x8, 2, 1, 3);
    entries.set(1, 0, 0, 77);
    entries.set(1, 1, 0, 99);
    VORN_Palette* palette = VORN_H_CreatePaletteData(&entries.record, VORN_CS_RGB);
    ImageVaAddTags(peer_.image(), ITAG_Palette, VORN_Word(palette), TAG_End);
    VORN_H_FreePaletteData(palette);
    peer_.takes().sends(emptyReply()).sends(module_.block(0, 1)).sends(acknowledgement());
    EXPECT_TRUE(read(peer_, host_));
    EXPECT_EQ(host_.get(1, 0, 0), 77);
    EXPECT_EQ(host_.get(1, 1, 0), 99);
    EXPECT_EQ(host_.get(1, 2, 0), 0);
}

TEST_F(ReadIndexed, FailsWithoutAPalette) {
    peer_.takes().sends(emptyReply()).takes().sends(emptyReply()).sends(acknowledgement());
    EXPECT_FALSE(read(peer_, host_));
    EXPECT_EQ(peer_.errorCode(), 5);
}

}  // namespace
}  // namespace vorn::test
