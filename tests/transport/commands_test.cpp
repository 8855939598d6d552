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
        {MessageBytes().item(MTAG_ErrorCode, 12).word(9).end(), true, 9, 0},
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

TEST(Acknowledgement, EndsTheLeftOversBeforeIt) {
    ScriptedPeer peer;
    peer.image()->ackOutstanding = true;
    const Bytes pixels(64);
    peer.sends(MessageBytes().number(ITAG_ReadHeight, 1).data(ITAG_Data, pixels.data(), 64).end())
        .sends(acknowledgement(2));
    EXPECT_TRUE(peer.play([&] { return VORN_L_WaitForAck(peer.image()); }));
    EXPECT_EQ(peer.image()->moduleVersion, 2u);
    EXPECT_FALSE(peer.image()->ackOutstanding);
}

TEST(Acknowledgement, BringsTheModulesError) {
    ScriptedPeer peer;
    peer.takes().sends(
        MessageBytes().number(MTAG_Ack, 2).error(2002, 7).number(MTAG_Version, 3).end());
    EXPECT_FALSE(peer.play([&] { return VORN_L_SendCMDAbort(peer.image()); }));
    EXPECT_EQ(peer.errorCode(), 2002);
    const Bytes abort = {4, 0, 0, 0, 8, 0, 0, 0, 6, 0, 0, 1, 12, 0,
                         0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0,  0};
    EXPECT_EQ(peer.taken().at(0), abort);
}

TEST(Abort, CollectsEveryAcknowledgementThatTheModuleOwes) {
    const Bytes empty = MessageBytes().end();
    const Bytes pixels = MessageBytes().number(ITAG_ReadHeight, 1).item(ITAG_Data, 8).end();
    const Bytes info = MessageBytes().number(ITAG_Width, 1).end();
    const struct {
        uint32_t owing;
        std::vector<Bytes> answers;
    } cases[] = {
        {CMD_LoadData, {pixels, empty, acknowledgement()}},              // taken while it sent
        {CMD_LoadData, {pixels, acknowledgement(), acknowledgement()}},  // it had ended
        {CMD_LoadInfo, {info, acknowledgement(), acknowledgement()}},
        {CMD_SaveInfo, {info, acknowledgement(), acknowledgement()}},
        {CMD_SaveData, {acknowledgement()}},
    };
    for (const auto& c : cases) {
        ScriptedPeer peer;
        peer.image()->ackOutstanding = true;
        peer.image()->owedCommand = c.owing;
        peer.takes();
        for (const Bytes& answer : c.answers) peer.sends(answer);
        EXPECT_TRUE(peer.play([&] { return VORN_L_SendCMDAbort(peer.image()); })) << c.owing;
        EXPECT_FALSE(peer.image()->ackOutstanding);
        // Nothing is left for the next exchange.
        EXPECT_EQ(VORN_L_AttemptStartReadingSharedStuff(&peer.image()->stuff), nullptr) << c.owing;
    }
}

TEST(Terminate, NeverChangesTheHandlesError) {
    ScriptedPeer peer;
    VORN_L_SetErrorCode(peer.image(), 27, 1);
    peer.takes();
    EXPECT_TRUE(peer.play([&] {
        const bool sent = VORN_L_SendCMDTerminate(peer.image());
        VORN_L_WaitForTerminate(peer.image());
        return sent;
    }));
    EXPECT_EQ(peer.errorCode(), 27);
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
    ScriptedPeer peer;
    VORN_H_ImageVaSetTags(peer.image(), ITAG_PageNumber, VORN_Word(4), TAG_End);
    VORN_DataFormat announced{DF_Chunky3x16, 10, 20, 3, 0, 0, {}, {}, {}, {}};
    announced.bitsPerChannel[1] = 12;
    EXPECT_TRUE(openWith(peer, MessageBytes()
                                   .number(ITAG_Width, 1)
                                   .format(announced)
                                   .number(ITAG_XAspect, 4)
                                   .number(ITAG_YAspect, 3)
                                   .end()));
    const auto tag = [&](uint32_t id) {
        return VORN_L_TagGetLongVal(VORN_L_TagFind(peer.image()->imageTags, id));
    };
    EXPECT_EQ(tag(ITAG_Width), 10);
    EXPECT_EQ(tag(ITAG_Height), 20);
    EXPECT_EQ(tag(ITAG_ImageChannelSize), 2);
    EXPECT_DOUBLE_EQ(VORN_L_TagGetDoubleVal(VORN_L_TagFind(peer.image()->imageTags, ITAG_Aspect)),
                     4.0 / 3);
    VORN_DataFormat kept;
    std::memcpy(&kept, VORN_L_TagFind(peer.image()->imageTags, ITAG_DataFormat) + 1, sizeof kept);
    EXPECT_EQ(kept.lineStep[2], 60);
    const VORN_TagItem* bits = VORN_L_TagFind(peer.image()->imageTags, VORN_ID_BITS_PER_CHANNEL);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(bits + 1)[0], 16);
    EXPECT_EQ(reinterpret_cast<const uint8_t*>(bits + 1)[1], 12);
    // The request carried the side list.
    EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(peer.takenList(), ITAG_PageNumber)), 4);
}

TEST(ImageInfo, CountsAlphaApartFromTheImagesChannels) {
    for (const int32_t alpha : {0, 1}) {
        ScriptedPeer peer;
        auto announced = formatOf(DF_LineInterleaved8, 10, 20, 4);
        announced.flags = alpha ? VORN_DF_ALPHA : 0;
        EXPECT_TRUE(openWith(peer, MessageBytes().format(announced).end()));
        for (const auto& [id, value] :
             {std::pair{ITAG_Channels, 4}, {ITAG_Alpha, alpha}, {ITAG_ImageChannels, 4 - alpha}})
            EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(peer.image()->imageTags, id)), value);
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
    for (const double none : {0.004, 0.0, -2.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(parts(none), std::pair(-1, -1)) << none;
    }
    ScriptedPeer peer;
    EXPECT_TRUE(
        openWith(peer, MessageBytes().number(ITAG_XAspect, 4).number(ITAG_YAspect, 0).end()));
    EXPECT_EQ(VORN_L_TagFind(peer.image()->imageTags, ITAG_Aspect), nullptr);
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
        {MessageBytes().error(8, 1).end(), acknowledgement(),
         8},                    // an error, then the acknowledgement
        {refusal, {}, 2001},    // both in one
        {info, refusal, 2001},  // the second opening step failed
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
