#include <gtest/gtest.h>

#include "tests/transport/scripted_peer.h"

namespace {

const VORN_TagItem* listOf(const Bytes& bytes) {
    return reinterpret_cast<const VORN_TagItem*>(bytes.data());
}

TEST(ErrorTag, IsRelayedToTheHandle) {
    const struct {
        Bytes message;
        bool carries;
        int32_t code, subcode;
    } cases[] = {
        {MessageBytes().error(9, 4).end(), true, 9, 4},
        {MessageBytes().error(0, 4).end(), true, 99, 0},  // no error: the handle's stays
        {MessageBytes().number(MTAG_ErrorCode, 9).end(), true, 9, 0},
        {MessageBytes().item(MTAG_ErrorCode, 8).end(), true, 6, 0},
        {MessageBytes().number(ITAG_Width, 1).end(), false, 99, 0},
    };
    for (const auto& c : cases) {
        ScriptedPeer peer;
        VORN_L_SetErrorCode(peer.image(), 99, 0);
        EXPECT_EQ(VORN_L_HandleErrorCode(peer.image(), listOf(c.message)), c.carries);
        const VORN_ErrorPair error = VORN_H_ImageGetError(peer.image());
        EXPECT_EQ(VORN_ErrorPairCode(error), c.code);
        EXPECT_EQ(VORN_ErrorPairSubcode(error), c.subcode);
    }
}

TEST(Abort, CollectsEveryAcknowledgementThatTheModuleOwesAndItsError) {
    const Bytes empty = emptyMessage(), done = acknowledgement(2);
    const Bytes pixels = MessageBytes().number(ITAG_ReadHeight, 1).item(ITAG_Data, 8).end();
    const Bytes info = MessageBytes().number(ITAG_Width, 1).end();
    const struct {
        uint32_t owing;
        std::vector<Bytes> answers;
        int32_t error = 0;
    } cases[] = {
        {CMD_LoadData, {pixels, empty, done}},  // taken while it sent
        {CMD_LoadData, {pixels, done, done}},   // it had ended
        {CMD_LoadInfo, {info, done, done}},
        {CMD_SaveInfo, {info, done, done}},
        {CMD_SaveData, {done}},
        {CMD_SaveData, {acknowledgementWithError(2, 2002, 7)}, 2002},
    };
    for (const auto& c : cases) {
        ScriptedPeer peer;
        peer.image()->expectAck(c.owing);
        peer.takes();
        for (const Bytes& answer : c.answers) peer.sends(answer);
        EXPECT_EQ(peer.play([&] { return VORN_L_SendCMDAbort(peer.image()); }), c.error == 0);
        EXPECT_EQ(peer.errorCode(), c.error) << c.owing;
        EXPECT_EQ(peer.image()->moduleVersion, c.error ? 3u : 2u);
        EXPECT_FALSE(peer.image()->ackOutstanding);
        // Nothing is left for the next exchange.
        EXPECT_EQ(VORN_L_AttemptStartReadingSharedStuff(&peer.image()->stuff), nullptr) << c.owing;
    }
}

TEST(Terminate, NeverChangesTheHandlesError) {
    ScriptedPeer peer;
    VORN_L_SetErrorCode(peer.image(), 27, 1);
    peer.image()->stuff.linkDown = true;
    VORN_L_WaitForTerminate(peer.image());
    EXPECT_EQ(peer.errorCode(), 27);
}

bool openWith(ScriptedPeer& peer, const Bytes& answer, const Bytes& second = acknowledgement()) {
    peer.takes().sends(answer);
    if (!second.empty()) peer.sends(second);
    return peer.play([&] { return VORN_L_WaitForInfo(peer.image()); });
}

TEST(ImageInfo, IsMergedAndCompleted) {
    for (const int32_t alpha : {0, 1}) {
        ScriptedPeer peer;
        VORN_H_ImageVaSetTags(peer.image(), ITAG_PageNumber, VORN_Word(4), TAG_End);
        VORN_DataFormat announced{DF_Chunky4x16, 10, 20, 4, 0, 0, {}, {}, {}, {}};
        announced.bitsPerChannel[1] = 12;
        announced.flags = alpha ? VORN_DF_ALPHA : 0;
        EXPECT_TRUE(openWith(peer, MessageBytes().number(ITAG_Width, 1).format(announced).end()));
        const auto tag = [&](uint32_t id) { return VORN_L_TagFind(peer.image()->imageTags, id); };
        for (const auto& [id, value] : {std::pair{ITAG_Width, 10},
                                        {ITAG_Height, 20},
                                        {ITAG_ImageChannelSize, 2},
                                        {ITAG_Channels, 4},
                                        {ITAG_Alpha, alpha},
                                        {ITAG_ImageChannels, 4 - alpha}})
            EXPECT_EQ(VORN_L_TagGetLongVal(tag(id)), value);
        VORN_DataFormat kept;
        std::memcpy(&kept, tag(ITAG_DataFormat) + 1, sizeof kept);
        EXPECT_EQ(kept.lineStep[2], 80);
        const auto* bits = reinterpret_cast<const uint8_t*>(tag(VORN_ID_BITS_PER_CHANNEL) + 1);
        EXPECT_EQ(bits[0], 16);
        EXPECT_EQ(bits[1], 12);
        // The request carried the side list.
        EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(peer.takenList(), ITAG_PageNumber)), 4);
    }
}

TEST(ImageInfo, DerivesTheAspectThatIsMissing) {
    const auto parts = [](double aspect) {
        ScriptedPeer peer;
        EXPECT_TRUE(openWith(peer, MessageBytes().real(ITAG_Aspect, aspect).end()));
        int32_t x = -1;
        int32_t y = -1;
        vorn::findLong(peer.image()->imageTags, ITAG_XAspect, x);
        vorn::findLong(peer.image()->imageTags, ITAG_YAspect, y);
        return std::pair(x, y);
    };
    EXPECT_EQ(parts(1.5), std::pair(150, 100));
    for (const double none : {0.004, 0.0, -2.0, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(parts(none), std::pair(-1, -1)) << none;
    for (const int32_t y : {3, 0}) {
        ScriptedPeer peer;
        EXPECT_TRUE(
            openWith(peer, MessageBytes().number(ITAG_XAspect, 4).number(ITAG_YAspect, y).end()));
        const VORN_TagItem* ratio = VORN_L_TagFind(peer.image()->imageTags, ITAG_Aspect);
        EXPECT_DOUBLE_EQ(ratio ? VORN_L_TagGetDoubleVal(ratio) : -1, y ? 4.0 / y : -1);
    }
}

TEST(ImageInfo, RefusesFormatsThatAreNone) {
    const auto huge = formatOf(DF_Chunky3x8, 65537, 1, 3);
    for (const Bytes& wrong :
         {MessageBytes().format(huge).end(), MessageBytes().data(ITAG_DataFormat, &huge, 124).end(),
          MessageBytes().format(formatOf(DF_LineInterleaved8, 1, 1, 9)).end(),
          MessageBytes().format(formatOf(DF_LineInterleaved16, 1, 1, 0x7FFFFFFF)).end()}) {
        ScriptedPeer peer;
        EXPECT_FALSE(openWith(peer, wrong));
        EXPECT_EQ(peer.errorCode(), 31);
    }
}

TEST(ImageInfo, NeedsAnAnswerAndThenAnAcknowledgement) {
    const Bytes info = MessageBytes().number(ITAG_Width, 1).end();
    const Bytes refusal = MessageBytes().number(MTAG_Ack, 2).error(2001, 0).end();
    const struct {
        Bytes first, second;
        int32_t error;
    } cases[] = {
        {acknowledgement(), {}, 5},  // nothing but the acknowledgement
        {info, info, 5},             // none at all
        {MessageBytes().error(8, 1).end(), acknowledgement(), 8},  // an error comes first
        {refusal, {}, 2001},                                       // both in one
        {info, refusal, 2001},                                     // the second opening step failed
    };
    for (const auto& c : cases) {
        ScriptedPeer peer;
        EXPECT_FALSE(openWith(peer, c.first, c.second));
        EXPECT_EQ(peer.errorCode(), c.error);
    }
}

TEST(ImageInfo, CannotChangeWhatTheHandleIs) {
    ScriptedPeer peer;
    EXPECT_TRUE(openWith(peer, MessageBytes()
                                   .number(MTAG_ModuleType, 2)
                                   .text(MTAG_ModuleName, "/bin/other")
                                   .number(MTAG_ModuleType, 7)
                                   .number(ITAG_Output, 1)
                                   .text(ITAG_Artist, "me")
                                   .end()));
    EXPECT_EQ(VORN_L_ImageGetModType(peer.image()), VORN_LOADER);
    EXPECT_EQ(VORN_L_TagFind(peer.image()->imageTags, MTAG_ModuleName), nullptr);
    EXPECT_EQ(VORN_L_TagFind(peer.image()->imageTags, ITAG_Output), nullptr);
    EXPECT_NE(VORN_L_TagFind(peer.image()->imageTags, ITAG_Artist), nullptr);
}

}  // namespace
