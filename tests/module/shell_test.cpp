#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

const Bytes kEmpty = emptyMessage();

int32_t fail() {
    VORN_M_SetErrorCode(2002, 28);
    return 0;
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

TEST(Conversations, GoAsFarAsTheCallbacksLetThemAndTellErrorsAtOnceAndAgain) {
    const Bytes info = command(CMD_LoadInfo), data = command(CMD_LoadData);
    const Bytes query = command(CMD_SaveInfo), save = command(CMD_SaveData);
    const Bytes open = command(CMD_SaveOpen), abort = command(CMD_Abort);
    const Bytes other = command(0x2003), stop = interrupt();
    const Bytes number = MessageBytes().number(ITAG_Orientation, 3).end();
    const Bytes error = MessageBytes().error(2002, 28).end();
    const Bytes refused = acknowledgementWithError(2, 2002, 28);
    const auto ack = [](int32_t round) { return acknowledgementOf(round); };
    using Change = std::function<void(Callbacks&)>;
    const Change nothing = [](auto&) {}, withoutAny = [](auto&c) { c = {}; };
    const Change openFails = [](auto& c) {
        c.loaderOpen = c.saverOpen = [](auto*) { return fail(); };
    };
    const Change beginFails = [](auto& c) { c.loaderBegin = c.saverBegin = fail; };
    const Change beginRefuses = [](auto& c) { c.saverBegin = [] { return 0; }; };
    const Change readIsMissing = [](auto& c) { c.loaderRead = nullptr; };
    const Change writeFails = [](auto& c) { c.saverWrite = fail; };
    const Change answers = [](auto& c) {
        c.saverQuery = [] { VORN_M_SetVaImageInfo(ITAG_Orientation, VORN_Word(3), TAG_End); };
    };
    const struct {
        int32_t type;
        Change change;
        std::vector<Turn> turns;
        const char* calls;
    } cases[] = {
        // Whatever the command, and if there is none, it is acknowledged.
        {VORN_LOADER, withoutAny, {{info, {ack(2)}}, {data, {ack(3)}}, {query, {ack(4)}}}, ""},
        {VORN_LOADER, withoutAny, {{open, {ack(2)}}, {other, {ack(3)}}, {number, {ack(4)}}}, ""},
        // A round that ends without an image ends with the close.
        {VORN_LOADER, nothing, {{info, {ack(2)}}, {other, {ack(3)}}}, "open begin"},
        {VORN_LOADER, nothing, {{info, {ack(2)}}, {number, {ack(3)}}}, "open begin close"},
        {VORN_LOADER, nothing, {{info, {ack(2)}}, {abort, {ack(3)}}}, "open begin close"},
        {VORN_LOADER, nothing, {{abort, {ack(2)}}, {abort, {ack(3)}}}, "close close"},
        {VORN_LOADER, openFails, {{info, {refused}}}, "open close"},
        {VORN_LOADER, beginFails, {{info, {refused}}}, "open begin close"},
        {VORN_LOADER, beginFails, {{data, {refused}}}, "open begin close"},
        // That the reading starts is said only when the picture was open.
        {VORN_LOADER, nothing, {{data, {ack(2)}}}, "open begin read close"},
        {VORN_LOADER,
         nothing,
         {{info, {ack(2)}}, {data, {kEmpty, ack(3)}}},
         "open begin read close"},
        {VORN_LOADER, readIsMissing, {{info, {ack(2)}}, {data, {ack(3)}}}, "open begin"},
        {VORN_LOADER,
         nothing,
         {{command(CMD_Module), {acknowledgementWithError(2, 53, 0)}}},
         "close"},
        {VORN_SAVER, answers, {{query, {number, ack(2)}}}, "query close"},
        // A block that nobody takes, and an end that is none without an interrupt.
        {VORN_SAVER,
         nothing,
         {{save, {kEmpty}}, {number, {}}, {command(CMD_Terminate), {}}, {stop, {ack(2)}}},
         "open begin write close"},
        // The picture is opened only when none is open.
        {VORN_SAVER,
         nothing,
         {{open, {ack(2)}}, {open, {ack(3)}}, {save, {kEmpty}}, {stop, {ack(4)}}},
         "open begin write close"},
        // The host sends in vain.
        {VORN_SAVER, openFails, {{save, {kEmpty}}, {stop, {refused}}}, "open close"},
        {VORN_SAVER,
         beginFails,
         {{save, {error, kEmpty}}, {stop, {refused}}, {abort, {ack(3)}}},
         "open begin close close"},
        {VORN_SAVER,
         beginRefuses,
         {{save, {MessageBytes().error(0, 0).end(), kEmpty}}, {stop, {ack(2)}}},
         "open begin close"},
        {VORN_SAVER,
         writeFails,
         {{save, {kEmpty, error}}, {stop, {refused}}},
         "open begin write close"},
    };
    for (const auto& c : cases) {
        Callbacks callbacks = c.type == VORN_LOADER ? plainLoader() : plainSaver();
        c.change(callbacks);
        EXPECT_EQ(converse(c.type, callbacks, c.turns), c.calls) << &c - cases;
    }
}

TEST(SaverDeathTest, EndsWithStatusTwentyWithoutItsCallbacks) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const bool opens : {true, false}) {
        Callbacks callbacks = plainSaver();
        opens ? void(callbacks.saverWrite = nullptr) : void(callbacks.saverOpen = nullptr);
        EXPECT_EXIT(converse(VORN_SAVER, callbacks, {{command(CMD_SaveData), {kEmpty}}}),
                    testing::ExitedWithCode(20), "exiting abnormally");
    }
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
}

}  // namespace
