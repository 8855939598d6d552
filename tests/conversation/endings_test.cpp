// Modules that end between two images, and modules that say what no module may say. (Those that go
// wrong in the middle of a conversation are the business of tests/injection.)
#include <sys/stat.h>

#include <csignal>

#include "tests/conversation/host.h"

namespace {

// misbehave's picture.
const Shape kShape{4, 6, 1, 1};

Picture misbehavesPicture(int lines) {
    Picture picture = plainPicture(kShape);
    for (int y = 0; y < lines; ++y)
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

TEST_F(Endings, AModuleWithoutCommandsSaysSoAndGoesOn) {
    Loader loader("version-3");
    ASSERT_TRUE(loader.open("x"));
    EXPECT_EQ(VORN_H_ModuleVaSendCommand(loader, CMD_Module, TAG_End), nullptr);
    EXPECT_EQ(loader.code(), 53);
    const Picture target = plainPicture(kShape);
    EXPECT_TRUE(loader.read(target));
    EXPECT_TRUE(same(target, misbehavesPicture(kShape.height)));
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

// Twice each: what a module said wrong must not be taken for an answer to what is asked next.
TEST_F(Endings, OfTrustInAnImageInformation) {
    const struct {
        const char* order;
        int code;
    } cases[] = {
        {"garbage-info", 5},
        {"ones-info", 5},
        {"endless-info", 5},
        {"odd-length-info", 5},
        {"short-item-info", 5},
        {"long-item-info", 5},
        {"goto-info", 5},
        {"splice-info", 5},
        {"short-error-info", 6},
        {"error-in-block-info", 2002},
        {"acknowledgement-info", 5},
        {"no-answer", 5},
        {"nine-channels", 31},
        {"no-width-format", 31},
        {"tall-format", 31},
        {"three-byte-format", 31},
        {"huge-layout", 31},
        {"short-format", 31},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.order);
        Loader loader(c.order);
        for (int time = 0; time < 2; ++time) {
            EXPECT_FALSE(loader.open("x"));
            EXPECT_EQ(loader.code(), c.code);
            loader.closeImage();
        }
    }
}

TEST_F(Endings, OfTrustInABlock) {
    const struct {
        const char* order;
        int code;
        int lines;  // that have come before
    } cases[] = {
        {"garbage", 5, 2},
        {"zeros", 5, 2},
        {"ones", 5, 2},
        {"endless", 5, 2},
        {"odd-length", 5, 2},
        {"short-item", 5, 2},
        {"long-item", 5, 2},
        {"goto", 5, 2},
        {"splice", 5, 2},
        {"no-lines", 2, 2},
        {"fewer-than-no-lines", 5, 2},
        {"no-data", 5, 2},
        {"empty-data", 5, 2},
        {"no-width", 5, 2},
        {"no-height", 5, 2},
        {"one-line-too-many", 5, 2},
        {"many-lines", 5, 2},
        {"terminate", 4, 2},
        {"error-in-block", 2002, 2},
        {"short-error", 6, 2},
        {"acknowledgement", 5, 2},
        {"steps-outside", 5, 0},
        {"steps-before", 5, 0},
        {"place-outside", 5, 0},
        {"place-far-outside", 5, 0},
        {"wide-samples", 5, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.order);
        Loader loader(c.order);
        for (int time = 0; time < 2; ++time) {
            ASSERT_TRUE(loader.open("x")) << loader.code();
            const Picture target = plainPicture(kShape);
            EXPECT_FALSE(loader.read(target));
            EXPECT_EQ(loader.code(), c.code);
            EXPECT_TRUE(same(target, misbehavesPicture(c.lines)));
            if (std::string(c.order) == "acknowledgement") break;  // it says one too many for good
            loader.closeImage();
        }
    }
}

TEST_F(Endings, AModuleThatHasNotStoppedMaySaySo) {
    Loader loader("terminate-zero");
    ASSERT_TRUE(loader.open("x"));
    const Picture target = plainPicture(kShape);
    EXPECT_TRUE(loader.read(target));
    EXPECT_TRUE(same(target, misbehavesPicture(kShape.height)));
}

TEST_F(Endings, AnImageWithoutAFormatHasNoPixels) {
    Loader loader("no-format");
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(loader.open("x"));
        EXPECT_EQ(loader.number(ITAG_Width), kShape.width);
        EXPECT_FALSE(loader.read(plainPicture(kShape)));
        EXPECT_EQ(loader.code(), 32);
        loader.closeImage();
    }
}

}  // namespace
