#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

TEST(SaveInfo, IsAnsweredByTheQueryCallback) {
    Callbacks callbacks = plainSaver();
    callbacks.saverQuery = [] { VORN_M_SetVaImageInfo(ITAG_Orientation, VORN_Word(3), TAG_End); };
    Twin twin(VORN_SAVER, callbacks);
    twin.receive();
    twin.send(CMD_SaveInfo);
    EXPECT_EQ(twin.receive(), MessageBytes().number(ITAG_Orientation, 3).end());
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    EXPECT_EQ(twin.calls(), "query close");
    twin.terminate();
}

TEST(SaveData, WritesAndWaitsForTheHostsEnd) {
    Twin twin(VORN_SAVER, plainSaver());
    twin.receive();
    twin.send(CMD_SaveData);
    EXPECT_EQ(twin.receive(), emptyMessage());
    twin.send(MessageBytes().number(ITAG_ReadLineNo, 0).end());  // a block that nobody takes
    twin.send(CMD_Terminate);  // ends nothing without an interrupt
    twin.send(interrupt());
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    EXPECT_EQ(twin.calls(), "open begin write close");
    twin.terminate();
}

TEST(SaveData, OpensAnImageOnlyWhenNoneIsOpen) {
    Twin twin(VORN_SAVER, plainSaver());
    twin.receive();
    for (int32_t round = 2; round < 4; ++round) {
        twin.send(CMD_SaveOpen);
        EXPECT_EQ(twin.receive(), acknowledgementOf(round));
    }
    EXPECT_EQ(twin.calls(), "open begin");
    twin.send(CMD_SaveData);
    EXPECT_EQ(twin.receive(), emptyMessage());
    twin.send(interrupt());
    EXPECT_EQ(twin.receive(), acknowledgementOf(4));
    EXPECT_EQ(twin.calls(), "open begin write close");
    twin.terminate();
}

int32_t fail() {
    VORN_M_SetErrorCode(2002, 28);
    return 0;
}

TEST(SaveData, LetsTheHostSendInVainWhenTheOpenCallbackFails) {
    Callbacks callbacks = plainSaver();
    callbacks.saverOpen = [](const VORN_TagItem*) { return fail(); };
    Twin twin(VORN_SAVER, callbacks);
    twin.receive();
    twin.send(CMD_SaveData);
    EXPECT_EQ(twin.receive(), emptyMessage());
    twin.send(interrupt());
    EXPECT_EQ(twin.receive(), acknowledgementWithError(2, 2002, 28));
    EXPECT_EQ(twin.calls(), "open close");
    twin.terminate();
}

TEST(SaveData, TellsTheErrorOfTheBeginCallbackAtOnceAndAgain) {
    for (const bool withError : {true, false}) {
        Callbacks callbacks = plainSaver();
        callbacks.saverBegin = [=] { return withError ? fail() : 0; };
        Twin twin(VORN_SAVER, callbacks);
        twin.receive();
        twin.send(CMD_SaveData);
        EXPECT_EQ(twin.receive(), withError ? errorMessage(2002, 28) : errorMessage(0, 0));
        EXPECT_EQ(twin.receive(), emptyMessage());
        twin.send(interrupt());
        EXPECT_EQ(twin.receive(),
                  withError ? acknowledgementWithError(2, 2002, 28) : acknowledgementOf(2));
        EXPECT_EQ(twin.calls(), "open begin close");
        twin.send(CMD_Abort);
        EXPECT_EQ(twin.receive(), acknowledgementOf(3));
        twin.terminate();
    }
}

TEST(SaveData, TellsTheErrorOfTheWriteCallbackAtOnceAndAgain) {
    Callbacks callbacks = plainSaver();
    callbacks.saverWrite = fail;
    Twin twin(VORN_SAVER, callbacks);
    twin.receive();
    twin.send(CMD_SaveData);
    EXPECT_EQ(twin.receive(), emptyMessage());
    EXPECT_EQ(twin.receive(), errorMessage(2002, 28));
    twin.send(interrupt());
    EXPECT_EQ(twin.receive(), acknowledgementWithError(2, 2002, 28));
    twin.terminate();
}

TEST(SaveData, DoesNotWaitForAnInterruptThatTheWriteCallbackHasSeen) {
    Callbacks callbacks = plainSaver();
    callbacks.saverWrite = [] {
        VORN_ImageDataState* state = VORN_M_CreateGetImageDataState();
        uint8_t pixel = 0;
        VORN_ChunkyBuffer buffer{};
        buffer.width = buffer.height = buffer.channels = buffer.bytesPerChannel = 1;
        buffer.channelPlace[0] = &pixel;
        EXPECT_EQ(VORN_M_GetImageData(&buffer, state), 0);
        EXPECT_EQ(VORN_M_GetImageData(&buffer, state), 0);  // ended: no wait
        VORN_M_DestroyImageDataState(state);
        return 1;
    };
    Twin twin(VORN_SAVER, callbacks);
    twin.receive();
    for (int32_t round = 2; round < 4; ++round) {
        twin.send(CMD_SaveData);
        EXPECT_EQ(twin.receive(), emptyMessage());
        twin.send(interrupt());
        EXPECT_EQ(twin.receive(), acknowledgementOf(round));
    }
    twin.terminate();
}

TEST(SaverDeathTest, EndsWithStatusTwentyWithoutItsCallbacks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto saveWith = [](const Callbacks& callbacks) {
        Twin twin(VORN_SAVER, callbacks);
        twin.receive();
        twin.send(CMD_SaveData);
        twin.receive();
    };
    Callbacks withoutWrite = plainSaver();
    withoutWrite.saverWrite = nullptr;
    Callbacks withoutOpen = plainSaver();
    withoutOpen.saverOpen = nullptr;
    EXPECT_EXIT(saveWith(withoutWrite), testing::ExitedWithCode(20), "exiting abnormally");
    EXPECT_EXIT(saveWith(withoutOpen), testing::ExitedWithCode(20), "exiting abnormally");
}

}  // namespace
