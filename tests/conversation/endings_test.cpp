// Modules that end between two images, don't start, or say what hosts don't expect. (Those that go
// wrong in the middle of a conversation are the business of tests/injection, those that lie of
// tests/lies.)
#include <sys/stat.h>

#include <csignal>

#include "tests/conversation/host.h"

namespace {

// misbehave's picture.
const Shape kShape{4, 6, 1, 1};

Picture misbehavesPicture() {
    Picture picture = plainPicture(kShape);
    for (int y = 0; y < kShape.height; ++y)
        for (int x = 0; x < kShape.width; ++x) picture.set(0, x, y, y);
    return picture;
}

using Endings = ConversationTest;

TEST_F(Endings, OfAnIdleModuleAreNoticedByTheNextCall) {
    Loader loader;
    ASSERT_TRUE(loader.reads("w=6,h=6"));
    loader.closeImage();
    for (int time = 0; time < 3; ++time) {
        const int program = loader.program();
        const int watch = loader.watch();
        ::kill(program, SIGKILL);
        awaitEnd(watch);
        ASSERT_TRUE(loader.reads("w=6,h=6,seed=" + std::to_string(time))) << loader.code();
        EXPECT_NE(loader.program(), program);
        loader.closeImage();
    }
    ::kill(loader.program(), SIGKILL);  // and nobody asks any more
}

TEST_F(Endings, AModuleWithoutCommandsOrThatHasNotStoppedSaysSoAndGoesOn) {
    for (const std::string order : {"version-3", "terminate-zero"}) {
        Loader loader(order);
        ASSERT_TRUE(loader.open("x"));
        if (order == "version-3") {
            EXPECT_EQ(VORN_H_ModuleVaSendCommand(loader, CMD_Module, TAG_End), nullptr);
            EXPECT_EQ(loader.code(), 53);
        }
        const Picture target = plainPicture(kShape);
        EXPECT_TRUE(loader.read(target));
        EXPECT_TRUE(same(target, misbehavesPicture())) << order;
    }
}

TEST_F(Endings, AModuleOfAnotherVersionIsRefusedAndEnds) {
    const struct {
        const char* order;
        int code;
    } cases[] = {{"version-2", 45}, {"version-0", 45}, {"version-4", 46}};
    for (const auto& c : cases) {
        Loader loader(c.order);
        for (int time = 0; time < 2; ++time) {
            EXPECT_FALSE(loader.open("x"));
            EXPECT_EQ(loader.code(), c.code) << c.order;
            awaitProgramsIn(moduleHome().path());  // before the handle is closed
        }
    }
}

TEST_F(Endings, WhatCannotBeStartedIsAnErrorWithTheSystemsReason) {
    const std::string text = moduleHome().write("Loaders/text", "no program\n");
    moduleHome().write("Loaders/plain", "no program\n");
    moduleHome().makeDirectory("Loaders/folder");
    ::chmod(text.c_str(), 0755);
    const struct {
        const char* name;
        int subcode;
    } cases[] = {{"missing", ENOENT}, {"plain", EACCES}, {"folder", EACCES}, {"text", ENOEXEC}};
    for (const auto& c : cases) {
        Module loader(c.name, VORN_LOADER);
        for (int time = 0; time < 2; ++time) {
            EXPECT_FALSE(loader.open("x"));
            EXPECT_EQ(loader.code(), 0x08000013) << c.name;
            EXPECT_EQ(loader.subcode(), c.subcode) << c.name;
            loader.closeImage();
        }
    }
}

TEST_F(Endings, AnImageWithoutAFormatOrWithoutInformationHasNoPixels) {
    Loader formless("no-format");
    Loader silent("no-answer");
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(formless.open("x"));
        EXPECT_EQ(formless.number(ITAG_Width), kShape.width);
        EXPECT_FALSE(formless.read(plainPicture(kShape)));
        EXPECT_EQ(formless.code(), 32);
        formless.closeImage();
        EXPECT_FALSE(silent.open("x"));
        EXPECT_EQ(silent.code(), 5);
        silent.closeImage();
    }
}

}  // namespace
