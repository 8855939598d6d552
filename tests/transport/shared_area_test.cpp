#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "platform/process.h"
#include "tests/transport/scripted_peer.h"
#include "transport/attach.h"

namespace {

int32_t threadError() { return VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)); }

TEST(SharedArea, LiesAsTheModuleTypeSays) {
    const struct {
        int32_t type, readOffset, readSize, writeOffset, writeSize;
        uint32_t spare;
    } cases[] = {{VORN_LOADER, 0, 98304, 98304, 32768, 5}, {VORN_SAVER, 98304, 32768, 0, 98304, 4}};
    for (const auto& c : cases) {
        ScriptedPeer peer(c.type);
        SharedStuff& stuff = peer.image()->stuff;
        EXPECT_EQ(stuff.readOffset, c.readOffset);
        EXPECT_EQ(stuff.readSize, c.readSize);
        EXPECT_EQ(stuff.writeOffset, c.writeOffset);
        EXPECT_EQ(stuff.writeSize, c.writeSize);
        for (uint32_t entry = 0; entry < 6; ++entry) {
            const bool posted = entry == 0 || entry == 3 || entry == c.spare;
            EXPECT_EQ(vorn::SemTryWait(*stuff.semaphores, entry), posted) << entry;
            EXPECT_FALSE(vorn::SemTryWait(*stuff.semaphores, entry)) << entry;
        }
        for (uint32_t i = 0; i < vorn::kSharedAreaSize; ++i) ASSERT_EQ(stuff.base[i], 0);
    }
}

TEST(SharedArea, IsTakenOnceByTwoStartsOfReading) {
    ScriptedPeer peer;
    SharedStuff& stuff = peer.image()->stuff;
    VORN_L_SetErrorCode(nullptr, 0, 0);
    VORN_L_EndReadingSharedStuff(&stuff);  // without a start: nothing
    EXPECT_EQ(VORN_L_AttemptStartReadingSharedStuff(&stuff), nullptr);
    EXPECT_EQ(threadError(), 0);
    vorn::SemPost(*stuff.semaphores, 2);
    EXPECT_EQ(VORN_L_StartReadingSharedStuff(&stuff), stuff.readPointer);
    EXPECT_EQ(VORN_L_StartReadingSharedStuff(&stuff), stuff.readPointer);
    vorn::SemTryWait(*stuff.semaphores, 3);
    VORN_L_EndReadingSharedStuff(&stuff);
    VORN_L_EndReadingSharedStuff(&stuff);
    EXPECT_TRUE(vorn::SemTryWait(*stuff.semaphores, 3));
    EXPECT_FALSE(vorn::SemTryWait(*stuff.semaphores, 3));
}

TEST(SharedArea, FailsAtOnceWhileTheLinkIsDown) {
    VORN_Image* image = VORN_L_ImageVaCreateHandle(0, TAG_End);
    EXPECT_EQ(VORN_L_ImageHandleStartReading(image), nullptr);
    EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(image)), 3);
    VORN_L_SetErrorCode(image, 0, 0);
    EXPECT_EQ(VORN_L_ImageHandleStartWriting(image, 0), nullptr);
    EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(image)), 3);
    VORN_L_ImageCloseHandle(image);
    VORN_L_ImageDestroyHandle(image);
}

bool attach(SharedStuff& stuff, std::vector<std::string> words) {
    const std::vector<char*> arguments = argumentsOf(words);
    return vorn::SharedStuffAttach(stuff, static_cast<int>(arguments.size()),
                                   const_cast<char**>(arguments.data()));
}

TEST(Attach, ReturnsAllThatItTook) {
    ScriptedPeer peer;
    SharedStuff module{};
    ASSERT_TRUE(attach(module, commandLineOf(peer.image()->stuff)));
    const int32_t watched = module.semaphores->watched;
    EXPECT_TRUE(vorn::platform::isSemaphore(watched));
    vorn::SharedStuffDetach(module);
    EXPECT_FALSE(vorn::platform::isSemaphore(watched)) << "still open";
    EXPECT_EQ(module.base, nullptr);
    EXPECT_TRUE(module.linkDown);
}

TEST(Attach, RefusesAWrongCommandLine) {
    ScriptedPeer peer;
    const auto with = [&](size_t index, const std::string& word) {
        auto words = commandLineOf(peer.image()->stuff);
        words[index] = word;
        return words;
    };
    const auto first = [&](long count) {
        const auto words = commandLineOf(peer.image()->stuff);
        return std::vector<std::string>(words.begin(), words.begin() + count);
    };
    const std::vector<std::vector<std::string>> wrong = {
        first(5),                            // fewer than six arguments
        first(14),                           // no areas
        with(0, "0"),                        // no block
        with(0, "2"),                        // standard error is none
        with(2, "9999"),                     // not an open semaphore
        with(2, "x"),    with(15, "98305"),  // areas that leave the block
        with(14, "-4"),  with(17, "2147483647"), with(1, std::string(600, '1')),
    };
    for (size_t i = 0; i < wrong.size(); ++i) {
        SharedStuff stuff{};
        EXPECT_FALSE(attach(stuff, wrong[i])) << i;
        EXPECT_EQ(stuff.base, nullptr) << i;
    }
}

}  // namespace
