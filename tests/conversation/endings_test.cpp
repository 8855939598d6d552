// Modules that end between two images, don't start, or say what hosts don't expect. (Those that go
// wrong in the middle of a conversation are the business of tests/injection, those that lie of
// tests/lies.)
#include <sys/stat.h>

#include <csignal>

#include "tests/conversation/host.h"

namespace {

using Endings = ConversationTest;

TEST_F(Endings, OfAnIdleModuleAreNoticedByTheNextCall) {
    Loader loader;
    ASSERT_TRUE(loader.reads("w=6,h=6"));
    for (const bool closed : {true, false, true}) {
        if (closed) loader.close();
        const int program = loader.program();
        const int watch = loader.watch();
        ::kill(program, SIGKILL);
        awaitEnd(watch);
        ASSERT_TRUE(loader.reads("w=6,h=6")) << closed;
        EXPECT_NE(loader.program(), program);
    }
    ::kill(loader.program(), SIGKILL);  // and nobody asks any more
}

TEST_F(Endings, AModuleThatKnowsNoCommandsOrHasNotStoppedGoesOn) {
    Loader loader;
    EXPECT_TRUE(loader.reads("h=6,block=2,inplace=1,goeson=1"));
    Saver saver;
    ASSERT_TRUE(saver.open(moduleHome().path("saved")));
    EXPECT_EQ(VORN_H_ModuleVaSendCommand(saver, CMD_Module, TAG_End), nullptr);
    EXPECT_EQ(saver.error(), 53);
    VORN_L_SetErrorCode(saver, 0, 0);  // a write that ends with an error counts as failed
    const Picture picture = plainPicture({});
    saver.describe(picture, VORN_CS_GRAY);
    EXPECT_TRUE(saver.write(picture));
}

TEST_F(Endings, AModuleOfAnotherVersionIsRefusedAndEnds) {
    const std::pair<const char*, int> cases[] = {
        {"version-2", 45}, {"version-0", 45}, {"version-4", 46}};
    for (const auto& [name, code] : cases) {
        Loader loader(name);
        for (int time = 0; time < 2; ++time) {
            EXPECT_FALSE(loader.open("x"));
            EXPECT_EQ(loader.error(), code) << name;
            awaitProgramsIn(moduleHome().path());  // before the handle is closed
        }
    }
}

TEST_F(Endings, WhatCannotBeStartedIsAnErrorWithTheSystemsReason) {
    const std::string text = moduleHome().write("Loaders/text", "no program\n");
    moduleHome().write("Loaders/plain", "no program\n");
    moduleHome().makeDirectory("Loaders/folder");
    ::chmod(text.c_str(), 0755);
    const std::pair<const char*, int> cases[] = {
        {"missing", ENOENT}, {"plain", EACCES}, {"folder", EACCES}, {"text", ENOEXEC}};
    for (const auto& [name, reason] : cases) {
        Module loader(name, VORN_LOADER);
        for (int time = 0; time < 2; ++time) {
            EXPECT_FALSE(loader.open("x"));
            EXPECT_EQ(loader.error(), 0x08000013) << name;
            EXPECT_EQ(loader.subcode(), reason) << name;
        }
    }
}

TEST_F(Endings, APictureNeedsAFormatAndEveryModuleMustAnswer) {
    Loader loader;
    Saver mute("mute");
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(loader.open("w=4,formless=1"));
        EXPECT_EQ(loader.number(ITAG_Width), 4);
        EXPECT_FALSE(loader.read(plainPicture({4, 6, 3, 1})));
        EXPECT_EQ(loader.error(), 32);
        EXPECT_FALSE(loader.open("silent=1"));
        EXPECT_EQ(loader.error(), 5);
        EXPECT_FALSE(mute.open(moduleHome().path("saved")));
        EXPECT_EQ(mute.error(), 5);
    }
}

}  // namespace
