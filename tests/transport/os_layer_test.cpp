// Both kinds of system behind the transport.
#include "transport/os_layer.h"

#include <gtest/gtest.h>
#include <vorn/support.h>

#include <thread>

#include "platform/process.h"
#include "platform/thread_messages.h"
#include "tests/scratch_home.h"

namespace vorn {
namespace {

struct System {
    const char* name;
    const OsLayer& layer;
    bool sharesCounts;
};

class Systems : public testing::TestWithParam<System> {
  protected:
    Systems() {
        if (GetParam().sharesCounts) set_->counts = &counts_;
    }
    ~Systems() override { layer_.semDestroySet(set_); }

    bool wait(uint32_t entry) { return layer_.semWait(*set_, entry); }
    bool tryWait(uint32_t entry) { return layer_.semTryWait(*set_, entry); }
    void post(uint32_t entry) { layer_.semPost(*set_, entry); }

    const OsLayer& layer_ = GetParam().layer;
    SemaphoreSet* const set_ = layer_.semCreateSet();
    SharedCounts counts_{1, {}};
};

TEST_P(Systems, LoseNoTurnOfAHundredThousand) {
    constexpr int kTurns = 100000;
    int64_t shared = 0;  // owned by the side whose turn it is
    std::thread peer([&] {
        for (int turn = 0; turn < kTurns; ++turn) {
            wait(1);
            shared = shared * 3 % 1000003 + turn;
            post(0);
        }
    });
    int64_t expected = 0;
    for (int turn = 0; turn < kTurns; ++turn) {
        shared += 1;
        post(1);
        ASSERT_TRUE(wait(0));
        expected = (expected + 1) * 3 % 1000003 + turn;
        ASSERT_EQ(shared, expected);
    }
    peer.join();
    for (uint32_t entry = 0; entry < kSemaphoreCount; ++entry) EXPECT_FALSE(tryWait(entry));
}

TEST_P(Systems, CountEveryPostOfSeveralAtOnce) {
    constexpr int kPosts = 200;
    std::thread other([&] {
        for (int i = 0; i < kPosts / 2; ++i) post(4);
    });
    for (int i = 0; i < kPosts / 2; ++i) post(4);
    for (int i = 0; i < kPosts; ++i) ASSERT_TRUE(wait(4)) << i;
    other.join();
    EXPECT_FALSE(tryWait(4));
}

TEST_P(Systems, EndAWaitByTheStopSemaphoreUnlessThereIsSomethingToTake) {
    set_->stop = platform::createSemaphore();
    platform::postSemaphore(set_->stop);
    post(2);
    EXPECT_TRUE(wait(2));
    EXPECT_FALSE(wait(2));
    platform::closeDescriptor(set_->stop);
}

TEST_P(Systems, NameSixSemaphoresThatFitTheCommandLine) {
    for (int i = 0; i < kSemaphoreCount; ++i) {
        const std::string name = set_->entry[i].name;
        EXPECT_EQ(name.substr(name.size() - 2), "VN");
        EXPECT_GT(set_->entry[i].handle, 0);
    }
}

constexpr System kSystems[] = {{"KernelObjects", kKernelObjects, false},
                               {"KernelObjectsWithSharedCounts", kKernelObjects, true},
                               {"GlobalBlocks", kGlobalBlocks, false}};

INSTANTIATE_TEST_SUITE_P(Of, Systems, testing::ValuesIn(kSystems), [](const auto& of) {
    return std::string(of.param.name);
});

SemaphoreSet* waitedOn = nullptr;
uint32_t dispatched = 0;

TEST(GlobalBlocks, DispatchTheThreadsMessagesInAWaitThatMayLastAndNudgeThePeer) {
    waitedOn = kGlobalBlocks.semCreateSet();
    const int32_t self = platform::currentThreadId();
    waitedOn->peerThread = self;
    platform::setMessageProcedure([](const platform::ThreadMessage& message) {
        dispatched = 10 * dispatched + message.word;
        if (dispatched == 123) kGlobalBlocks.semPost(*waitedOn, 0);
    });
    platform::ThreadMessage message;
    platform::peekThreadMessage(message);  // makes the queue
    std::thread([self] {
        for (const uint32_t word : {1, 2, 3})
            EXPECT_TRUE(platform::postThreadMessage(self, {7, word, 0}));
    }).join();
    EXPECT_FALSE(kGlobalBlocks.semTryWait(*waitedOn, 0));
    EXPECT_EQ(dispatched, 0u);
    EXPECT_TRUE(kGlobalBlocks.semWait(*waitedOn, 0));
    EXPECT_EQ(dispatched, 123u);
    EXPECT_TRUE(platform::peekThreadMessage(message));
    EXPECT_EQ(message.number, 0u);
    platform::setMessageProcedure(nullptr);
    kGlobalBlocks.semDestroySet(waitedOn);
}

TEST(WaitsAndPosts, KeepTheSystemThatTheFirstOfThemFound) {
    SemaphoreSet* set = SemCreateSet();
    SemPost(*set, 0);
    EXPECT_TRUE(SemWait(*set, 0));
    EXPECT_FALSE(SemTryWait(*set, 0));
    {
        const ScopedVariable other("VORN_SYSTEM", OSEqualWin162() ? "nt" : "win16");
        SemPost(*set, 0);
        SemPost(*set, 0);
        EXPECT_TRUE(SemWait(*set, 0));
        EXPECT_TRUE(SemTryWait(*set, 0));
        EXPECT_FALSE(SemTryWait(*set, 0));
    }
    SemDestroySet(set);
}

}  // namespace
}  // namespace vorn
