#include "platform/thread_messages.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/connection.h"
#include "platform/process.h"

namespace {

using namespace vorn;

TEST(ThreadMessages, ComeInOrderUntilTheQueueIsFull) {
    platform::ThreadMessage message;
    EXPECT_FALSE(platform::peekThreadMessage(message));
    uint32_t sent = 0;
    std::thread([&sent, to = platform::currentThreadId()] {
        while (sent < 100000 && platform::postThreadMessage(to, {1, sent, 2 * sent})) ++sent;
    }).join();
    EXPECT_GT(sent, 3u);
    EXPECT_LT(sent, 100000u);
    EXPECT_FALSE(platform::pauseForMessage(platform::kNoDescriptor, platform::kNoDescriptor, 0));
    for (uint32_t i = 0; i < sent; ++i) {
        ASSERT_TRUE(platform::peekThreadMessage(message));
        EXPECT_EQ(message.word, i);
        EXPECT_EQ(message.longWord, 2 * i);
    }
    EXPECT_FALSE(platform::peekThreadMessage(message));
}

TEST(ThreadMessages, ReachNoThreadThatIsGoneOrHasNoQueue) {
    int32_t gone = 0;
    std::thread([&gone] {
        platform::ThreadMessage message;
        platform::peekThreadMessage(message);
        gone = platform::currentThreadId();
        EXPECT_TRUE(platform::postThreadMessage(gone, {}));
    }).join();
    EXPECT_FALSE(platform::postThreadMessage(gone, {}));
    EXPECT_FALSE(platform::postThreadMessage(1, {}));
}

}  // namespace
