#include "platform/shared_count.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace vorn;
using platform::kNoDescriptor;

class SharedCounts : public testing::Test {
  protected:
    struct One {
        ~One() { platform::closeDescriptor(semaphore); }
        bool post() { return platform::postShared(shared, semaphore, false); }
        bool tryWait() { return platform::tryWaitShared(shared, semaphore); }
        bool wait(platform::WaitHistory& history, int32_t stop = kNoDescriptor) {
            return platform::waitShared(shared, semaphore, false, kNoDescriptor, stop, history);
        }
        platform::SharedCount shared{};
        const int32_t semaphore = platform::createSemaphore();
    };
    One there_, back_;
};

TEST_F(SharedCounts, TakeWhatWasPostedToTheMemoryAndToTheSystem) {
    EXPECT_TRUE(there_.post());
    EXPECT_FALSE(there_.post()) << "not 0 before";
    platform::postSemaphore(there_.semaphore);
    platform::WaitHistory history;
    EXPECT_TRUE(there_.wait(history));
    EXPECT_TRUE(there_.tryWait());
    EXPECT_TRUE(there_.wait(history));
    EXPECT_FALSE(there_.tryWait());
}

// Every third wait sleeps at once, so that falling asleep meets posts at all moments.
TEST_F(SharedCounts, LoseNoPostToAWaiterThatFallsAsleep) {
    constexpr int kRounds = 5000;
    int value = 0;  // owned by the side whose turn it is
    const auto play = [&](One& mine, One& others, int phase) {
        platform::WaitHistory history;
        for (int i = 0; i < kRounds; ++i) {
            history.skip = (i + phase) % 3 == 0;
            ASSERT_TRUE(mine.wait(history));
            ++value;
            others.post();
        }
    };
    std::thread peer([&] { play(there_, back_, 0); });
    there_.post();
    play(back_, there_, 1);
    peer.join();
    EXPECT_EQ(value, 2 * kRounds);
    EXPECT_TRUE(there_.tryWait());
    EXPECT_FALSE(there_.tryWait() || back_.tryWait());
}

TEST_F(SharedCounts, EndAWaitByTheStopSemaphore) {
    const int32_t stop = platform::createSemaphore();
    std::thread stopper([&] { platform::postSemaphore(stop); });
    platform::WaitHistory history;
    EXPECT_FALSE(there_.wait(history, stop));
    stopper.join();
    EXPECT_TRUE(there_.post());
    EXPECT_EQ(there_.shared.count, 1u) << "nobody sleeps any more";
    EXPECT_TRUE(there_.wait(history, stop));
    platform::closeDescriptor(stop);
}

// A peer may write anything at any moment: no call hangs, and the semaphore serves again.
TEST_F(SharedCounts, SurviveAPeerThatScribbles) {
    for (const uint32_t word : {0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        there_.shared.count = word;
        there_.post();
        there_.tryWait();
    }
    std::atomic<bool> done{false};
    std::thread scribbler([&] {
        for (uint32_t word = 0; !done; word = word * 1664525 + 1013904223)
            __atomic_store_n(&there_.shared.count, word, __ATOMIC_RELAXED);
    });
    for (int i = 0; i < 2000; ++i) {
        there_.post();
        there_.tryWait();
    }
    done = true;
    scribbler.join();
    there_.shared.count = 0;
    while (there_.tryWait()) {
    }
    EXPECT_TRUE(there_.post());
    EXPECT_TRUE(there_.tryWait());
}

}  // namespace
