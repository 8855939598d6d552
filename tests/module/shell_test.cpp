#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

TEST(Shell, AcknowledgesEveryCommandWithItsRoundAndVersion) {
    Twin twin(VORN_LOADER, {});
    const Bytes first = {7,  0, 0, 1, 12, 0, 0, 0, 1, 0, 0, 0, 0x84, 0, 0, 1,
                         12, 0, 0, 0, 3,  0, 0, 0, 0, 0, 0, 0, 8,    0, 0, 0};
    EXPECT_EQ(twin.receive(), first);
    int32_t round = 1;
    const uint32_t commands[] = {CMD_LoadInfo, CMD_LoadData, CMD_SaveInfo,
                                 CMD_SaveOpen, CMD_Abort,    0x2003};
    for (const uint32_t command : commands) {
        twin.send(command);
        EXPECT_EQ(twin.receive(), acknowledgementOf(++round)) << command;
    }
    twin.send(MessageBytes().number(ITAG_Width, 1).end());
    EXPECT_EQ(twin.receive(), acknowledgementOf(++round));
    twin.terminate();
}

TEST(Shell, SendsTheLastErrorOnceWithTheNextAcknowledgement) {
    Callbacks callbacks;
    callbacks.beforeTheShell = [] {
        VORN_M_SetErrorCode(5, 7);
        VORN_M_SetWarningCode(9, 0);
    };
    Twin twin(VORN_LOADER, callbacks);
    const Bytes first = twin.receive();
    EXPECT_EQ(first.size(), 48u);
    EXPECT_EQ(first, acknowledgementWithError(1, 9, 0));
    twin.send(CMD_Abort);
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    twin.terminate();
}

TEST(Shell, SaysWhichCommandsItDoesNotKnow) {
    Callbacks callbacks;
    callbacks.command = [](const VORN_TagItem*) {};
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    testing::internal::CaptureStderr();
    twin.send(0x3001);
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Invalid command number = 12289\n");
    EXPECT_EQ(twin.calls(), "");
    twin.terminate();
}

TEST(Shell, TakesTagsOneByOneAndSkipsThoseItDoesNotKnow) {
    Callbacks callbacks;
    callbacks.beforeTheShell = [] {
        EXPECT_TRUE(VORN_M_SetVaModuleTags(10u, VORN_Word(77), SHTAG_Version, VORN_Word(2), 12u,
                                           VORN_Word(78), SHTAG_End));
        EXPECT_TRUE(VORN_M_SetVaModuleTags(SHTAG_End));
    };
    Twin twin(VORN_LOADER, callbacks);
    EXPECT_EQ(twin.receive(), acknowledgementOf(1, 2));
    twin.terminate();
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
    const auto command = [](int32_t number) {
        return MessageBytes().number(MTAG_Command, number).end();
    };
    twin.receive();
    EXPECT_EQ(callsOf(command(CMD_LoadInfo)), "open begin");
    EXPECT_EQ(callsOf(command(0x2003)), "open begin");  // the image stays open
    EXPECT_EQ(callsOf(command(CMD_Abort)), "open begin close");
    EXPECT_EQ(callsOf(command(CMD_Abort)), "open begin close close");
    callsOf(command(CMD_LoadInfo));
    EXPECT_EQ(callsOf(MessageBytes().end()), "open begin close close open begin close");
    twin.terminate();
    EXPECT_EQ(twin.calls(), "open begin close close open begin close close close");
}

TEST(Shell, ClosesAnOpenImageOnceWhenItIsTerminated) {
    Twin twin(VORN_LOADER, plainLoader());
    twin.receive();
    twin.send(CMD_LoadInfo);
    twin.receive();
    twin.terminate();
    EXPECT_EQ(twin.calls(), "open begin close");
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
        char* name = VORN_L_TagGetString(VORN_L_TagFind(kept, ITAG_Filename));
        names += name;
        VORN_L_TagFreeString(name);
        return 1;
    };
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    twin.send(MessageBytes().number(MTAG_Command, CMD_LoadInfo).text(ITAG_Filename, "a.pnm").end());
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    EXPECT_EQ(names, "a.pnm");
    twin.terminate();
}

TEST(LoadInfo, EndsWithTheStepThatFails) {
    for (const bool openFails : {true, false}) {
        Callbacks callbacks = plainLoader();
        const auto fail = [] {
            VORN_M_SetErrorCode(2001, 4);
            return 0;
        };
        if (openFails)
            callbacks.loaderOpen = [=](const VORN_TagItem*) { return fail(); };
        else
            callbacks.loaderBegin = fail;
        Twin twin(VORN_LOADER, callbacks);
        twin.receive();
        twin.send(CMD_LoadInfo);
        EXPECT_EQ(twin.receive(), acknowledgementWithError(2, 2001, 4));
        EXPECT_EQ(twin.calls(), openFails ? "open close" : "open begin close");
        twin.terminate();
    }
}

TEST(LoadData, AnswersThatItStartsOnlyWhenTheImageWasOpen) {
    for (const bool opened : {true, false}) {
        Twin twin(VORN_LOADER, plainLoader());
        twin.receive();
        if (opened) {
            twin.send(CMD_LoadInfo);
            EXPECT_EQ(twin.receive(), acknowledgementOf(2));
        }
        twin.send(CMD_LoadData);
        if (opened) {
            EXPECT_EQ(twin.receive(), emptyMessage());
        }
        EXPECT_EQ(twin.receive(), acknowledgementOf(opened ? 3 : 2));
        EXPECT_EQ(twin.calls(), "open begin read close");
        twin.terminate();
    }
}

TEST(LoadData, ReadsNothingWhenTheImageDoesNotOpen) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderBegin = [] { return 0; };
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    twin.send(CMD_LoadData);
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    EXPECT_EQ(twin.calls(), "open begin close");
    twin.terminate();
}

TEST(LoadData, NeedsAllThreeCallbacks) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderRead = nullptr;
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    twin.send(CMD_LoadInfo);
    EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    twin.send(CMD_LoadData);
    EXPECT_EQ(twin.receive(), acknowledgementOf(3));
    EXPECT_EQ(twin.calls(), "open begin");
    twin.terminate();
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
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    for (int32_t answers = 0; answers < 3; ++answers) {
        results.clear();
        twin.send(MessageBytes()
                      .item(TAG_Interrupt, 8)
                      .number(MTAG_Command, CMD_Module)
                      .number(ITAG_PageNumber, answers)
                      .end());
        EXPECT_EQ(twin.receive(),
                  answers == 0 ? emptyMessage() : MessageBytes().number(ITAG_Width, 0).end());
        EXPECT_EQ(twin.receive(), acknowledgementOf(2 + answers));
        EXPECT_EQ(results, std::string("10").substr(0, static_cast<size_t>(answers)));
    }
    twin.terminate();
}

TEST(ModuleCommand, IsErrorFiftyThreeForAModuleWithoutCommands) {
    Twin twin(VORN_LOADER, plainLoader());
    twin.receive();
    twin.send(CMD_Module);
    EXPECT_EQ(twin.receive(), acknowledgementWithError(2, 53, 0));
    twin.terminate();
}

}  // namespace
