#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

const Bytes kEmpty = emptyMessage();

int32_t fail() {
    VORN_M_SetErrorCode(2002, 28);
    return 0;
}

TEST(Shell, AcknowledgesEveryCommandWithItsRoundAndVersion) {
    Twin twin(VORN_LOADER, {});
    const Bytes first = {7,  0, 0, 1, 12, 0, 0, 0, 1, 0, 0, 0, 0x84, 0, 0, 1,
                         12, 0, 0, 0, 3,  0, 0, 0, 0, 0, 0, 0, 8,    0, 0, 0};
    EXPECT_EQ(twin.receive(), first);
    int32_t round = 1;
    const uint32_t commands[] = {CMD_LoadInfo, CMD_LoadData, CMD_SaveInfo,
                                 CMD_SaveOpen, CMD_Abort,    0x2003};
    for (const uint32_t number : commands) {
        twin.send(command(number));
        EXPECT_EQ(twin.receive(), acknowledgementOf(++round)) << number;
    }
    twin.send(MessageBytes().number(ITAG_Width, 1).end());
    EXPECT_EQ(twin.receive(), acknowledgementOf(++round));
    twin.terminate();
}

TEST(Shell, SendsTheLastErrorOnceWithTheNextAcknowledgementAndSkipsUnknownTags) {
    Callbacks callbacks;
    callbacks.beforeTheShell = [] {
        EXPECT_TRUE(VORN_M_SetVaModuleTags(10u, VORN_Word(77), SHTAG_Version, VORN_Word(3), 12u,
                                           VORN_Word(78), SHTAG_End));
        VORN_M_SetErrorCode(5, 7);
        VORN_M_SetWarningCode(9, 0);
    };
    Twin twin(VORN_LOADER, callbacks);
    EXPECT_EQ(twin.receive(), acknowledgementWithError(1, 9, 0));
    twin.send(command(CMD_Abort));
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    twin.terminate();
}

TEST(Shell, SaysWhichCommandsItDoesNotKnow) {
    Callbacks callbacks;
    callbacks.command = [](const VORN_TagItem*) {};
    testing::internal::CaptureStderr();
    EXPECT_EQ(converse(VORN_LOADER, callbacks, {{command(0x3001), {acknowledgementOf(2)}}}), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid command number = 12289\n");
}

TEST(Shell, ReturnsAtOnceWhenNoHostHasStartedIt) {
    std::thread([] {
        EXPECT_EQ(VORN_a_Parent, 1);
        char name[] = "loader";
        char* arguments[] = {name, name, name, nullptr};
        VORN_M_SetVaModuleTags(SHTAG_Close, VORN_Word(+[] { ADD_FAILURE(); }), SHTAG_End);
        VORN_M_ShellMain(1, arguments);
        EXPECT_EQ(VORN_a_Parent, 0);
        EXPECT_EQ(VORN_M_GetParent(), 0);
        VORN_M_ShellMain(3, arguments);  // no connection's command line
    }).join();
    EXPECT_EQ(VORN_a_Parent, 1);
}

TEST(Shell, ClosesAfterEveryRoundThatEndsWithoutAnImageAndWhenItEnds) {
    Twin twin(VORN_LOADER, plainLoader());
    const auto callsOf = [&](const Bytes& message) {
        twin.send(message);
        twin.receive();
        return twin.calls();
    };
    twin.receive();
    EXPECT_EQ(callsOf(command(CMD_LoadInfo)), "open begin");
    EXPECT_EQ(callsOf(command(0x2003)), "open begin");  // the image stays open
    EXPECT_EQ(callsOf(command(CMD_Abort)), "open begin close");
    EXPECT_EQ(callsOf(command(CMD_Abort)), "open begin close close");
    callsOf(command(CMD_LoadInfo));
    EXPECT_EQ(callsOf(kEmpty), "open begin close close open begin close");
    EXPECT_EQ(callsOf(command(CMD_LoadInfo)), "open begin close close open begin close open begin");
    twin.terminate();
    EXPECT_EQ(twin.calls(), "open begin close close open begin close open begin close");
}

TEST(LoadInfo, GivesTheMessageToBothSteps) {
    Callbacks callbacks = plainLoader();
    const VORN_TagItem* kept = nullptr;
    std::string names;
    callbacks.loaderOpen = [&](const VORN_TagItem* message) {
        kept = message;
        return 1;
    };
    callbacks.loaderBegin = [&] {
        char name[16];
        names += VORN_L_CopyTagStringOrNull(kept, ITAG_Filename, name, sizeof name);
        return 1;
    };
    const Bytes message =
        MessageBytes().number(MTAG_Command, CMD_LoadInfo).text(ITAG_Filename, "a.pnm").end();
    converse(VORN_LOADER, callbacks, {{message, {acknowledgementOf(2)}}});
    EXPECT_EQ(names, "a.pnm");
}

TEST(Loading, GoesAsFarAsItsCallbacksLetIt) {
    const Bytes info = command(CMD_LoadInfo), data = command(CMD_LoadData);
    const auto refused = acknowledgementWithError(2, 2002, 28);
    const auto opening = [](const VORN_TagItem*) { return fail(); };
    const struct {
        std::function<void(Callbacks&)> change;
        std::vector<Turn> turns;
        const char* calls;
    } cases[] = {
        {[&](Callbacks& c) { c.loaderOpen = opening; }, {{info, {refused}}}, "open close"},
        {[](Callbacks& c) { c.loaderBegin = fail; }, {{info, {refused}}}, "open begin close"},
        {[](Callbacks& c) { c.loaderBegin = fail; }, {{data, {refused}}}, "open begin close"},
        // That the reading starts is said only when the picture was open.
        {[](Callbacks&) {}, {{data, {acknowledgementOf(2)}}}, "open begin read close"},
        {[](Callbacks&) {},
         {{info, {acknowledgementOf(2)}}, {data, {kEmpty, acknowledgementOf(3)}}},
         "open begin read close"},
        {[](Callbacks& c) { c.loaderRead = nullptr; },
         {{info, {acknowledgementOf(2)}}, {data, {acknowledgementOf(3)}}},
         "open begin"},
    };
    for (const auto& c : cases) {
        Callbacks callbacks = plainLoader();
        c.change(callbacks);
        EXPECT_EQ(converse(VORN_LOADER, callbacks, c.turns), c.calls) << &c - cases;
    }
}

TEST(Saving, GoesAsFarAsItsCallbacksLetItAndTellsErrorsAtOnceAndAgain) {
    const Bytes save = command(CMD_SaveData), open = command(CMD_SaveOpen), stop = interrupt();
    const Bytes error = errorMessage(2002, 28), done = acknowledgementOf(2);
    const Bytes again = acknowledgementWithError(2, 2002, 28);
    const struct {
        std::function<void(Callbacks&)> change;
        std::vector<Turn> turns;
        const char* calls;
    } cases[] = {
        // A block that nobody takes, and an end that is none without an interrupt.
        {[](Callbacks&) {},
         {{save, {kEmpty}},
          {MessageBytes().number(ITAG_ReadLineNo, 0).end(), {}},
          {command(CMD_Terminate), {}},
          {stop, {done}}},
         "open begin write close"},
        // The picture is opened only when none is open.
        {[](Callbacks&) {},
         {{open, {done}},
          {open, {acknowledgementOf(3)}},
          {save, {kEmpty}},
          {stop, {acknowledgementOf(4)}}},
         "open begin write close"},
        {[](Callbacks& c) {
             c.saverQuery = [] { VORN_M_SetVaImageInfo(ITAG_Orientation, VORN_Word(3), TAG_End); };
         },
         {{command(CMD_SaveInfo), {MessageBytes().number(ITAG_Orientation, 3).end(), done}}},
         "query close"},
        // The host sends in vain.
        {[](Callbacks& c) { c.saverOpen = [](const VORN_TagItem*) { return fail(); }; },
         {{save, {kEmpty}}, {stop, {again}}},
         "open close"},
        {[](Callbacks& c) { c.saverBegin = fail; },
         {{save, {error, kEmpty}}, {stop, {again}}, {command(CMD_Abort), {acknowledgementOf(3)}}},
         "open begin close close"},
        {[](Callbacks& c) { c.saverBegin = [] { return 0; }; },
         {{save, {errorMessage(0, 0), kEmpty}}, {stop, {done}}},
         "open begin close"},
        {[](Callbacks& c) { c.saverWrite = fail; },
         {{save, {kEmpty, error}}, {stop, {again}}},
         "open begin write close"},
    };
    for (const auto& c : cases) {
        Callbacks callbacks = plainSaver();
        c.change(callbacks);
        EXPECT_EQ(converse(VORN_SAVER, callbacks, c.turns), c.calls) << &c - cases;
    }
}

TEST(SaverDeathTest, EndsWithStatusTwentyWithoutItsCallbacks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto saveWith = [](const Callbacks& callbacks) {
        Twin twin(VORN_SAVER, callbacks);
        twin.receive();
        twin.send(command(CMD_SaveData));
        twin.receive();
    };
    Callbacks withoutWrite = plainSaver();
    withoutWrite.saverWrite = nullptr;
    Callbacks withoutOpen = plainSaver();
    withoutOpen.saverOpen = nullptr;
    EXPECT_EXIT(saveWith(withoutWrite), testing::ExitedWithCode(20), "exiting abnormally");
    EXPECT_EXIT(saveWith(withoutOpen), testing::ExitedWithCode(20), "exiting abnormally");
}

TEST(ModuleCommand, GetsExactlyOneAnswer) {
    std::string results;
    Callbacks callbacks;
    callbacks.command = [&](const VORN_TagItem* message) {
        const int32_t answers = VORN_L_TagGetLongVal(VORN_L_TagFind(message, ITAG_PageNumber));
        for (int32_t i = 0; i < answers; ++i) {
            results += VORN_M_SetVaCommandReturn(ITAG_Width, VORN_Word(i), TAG_End) ? '1' : '0';
        }
    };
    std::vector<Turn> turns;
    for (int32_t answers = 0; answers < 3; ++answers) {
        turns.push_back({MessageBytes()
                             .item(TAG_Interrupt, 8)
                             .number(MTAG_Command, CMD_Module)
                             .number(ITAG_PageNumber, answers)
                             .end(),
                         {answers == 0 ? kEmpty : MessageBytes().number(ITAG_Width, 0).end(),
                          acknowledgementOf(2 + answers)}});
    }
    converse(VORN_LOADER, callbacks, turns);
    EXPECT_EQ(results, "110");
    converse(VORN_LOADER, plainLoader(),
             {{command(CMD_Module), {acknowledgementWithError(2, 53, 0)}}});
}

}  // namespace
