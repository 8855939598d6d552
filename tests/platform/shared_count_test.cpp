#include "platform/shared_count.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace vorn;
using platform::kNoDescriptor;

class SharedCounts : public testing::Test {
  protected:
    ~SharedCounts() override { platform::closeDescriptor(semaphore_); }

    bool post() { return platform::postShared(shared_, semaphore_, false); }
    bool tryWait() { return platform::tryWaitShared(shared_, semaphore_); }
    bool wait(int32_t stop = kNoDescriptor) {
        return platform::waitShared(shared_, semaphore_, false, kNoDescriptor, stop, history_);
    }

    platform::SharedCount shared_{};
    platform::WaitHistory history_;
    const int32_t semaphore_ = platform::createSemaphore();
};

TEST_F(SharedCounts, TakeWhatWasPostedToTheMemoryAndToTheSystem) {
    EXPECT_TRUE(post());
    EXPECT_FALSE(post()) << "not 0 before";
    platform::postSemaphore(semaphore_);
    EXPECT_TRUE(wait());
    EXPECT_TRUE(tryWait());
    EXPECT_TRUE(wait());
    EXPECT_FALSE(tryWait());
}

TEST_F(SharedCounts, EndAWaitByTheStopSemaphore) {
    const int32_t stop = platform::createSemaphore();
    std::thread stopper([&] { platform::postSemaphore(stop); });
    EXPECT_FALSE(wait(stop));
    stopper.join();
    EXPECT_TRUE(post());
    EXPECT_EQ(shared_.count, 1u) << "nobody sleeps any more";
    EXPECT_TRUE(wait(stop));
    platform::closeDescriptor(stop);
}

// A peer may write anything at any moment: no call hangs, and the semaphore serves again.
TEST_F(SharedCounts, SurviveAPeerThatScribbles) {
    for (const uint32_t word : {0x80000000u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        shared_.count = word;
        post();
        tryWait();
    }
    std::atomic<bool> done{false};
    std::thread scribbler([&] {
        for (uint32_t word = 0; !done; word = word * 1664525 + 1013904223)
            __atomic_store_n(&shared_.count, word, __ATOMIC_RELAXED);
    });
    for (int i = 0; i < 2000; ++i) {
        post();
        tryWait();
    }
    done = true;
    scribbler.join();
    shared_.count = 0;
    while (tryWait()) {
    }
    EXPECT_TRUE(post());
    EXPECT_TRUE(tryWait());
}

}  // namespace
