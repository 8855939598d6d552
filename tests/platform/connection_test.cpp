#include "platform/connection.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <limits>

namespace {

using namespace vorn;
using platform::kNoDescriptor;

bool waitFor(int32_t semaphore, int32_t watched, int32_t stop) {
    platform::WaitHistory history;
    return platform::waitSemaphore(semaphore, watched, stop, history);
}

class Semaphore {
  public:
    ~Semaphore() { platform::closeDescriptor(number); }
    operator int32_t() const { return number; }

    const int32_t number = platform::createSemaphore();
};

TEST(Semaphores, PostedBeforeTheEndOfThePeerStillCount) {
    const Semaphore semaphore, ended;  // readable, as the watch of a program that has ended
    for (const int32_t number : {+semaphore, +semaphore, +ended}) platform::postSemaphore(number);
    EXPECT_TRUE(waitFor(semaphore, ended, kNoDescriptor));
    EXPECT_TRUE(waitFor(semaphore, kNoDescriptor, ended));
    EXPECT_FALSE(waitFor(semaphore, ended, kNoDescriptor));
    EXPECT_FALSE(waitFor(semaphore, kNoDescriptor, ended));
}

// A peer holds the same open file and can do with it what it likes.
TEST(Semaphores, NeverBlockTheOneWhoPostsOrTries) {
    const Semaphore semaphore;
    ASSERT_EQ(::fcntl(semaphore, F_SETFL, 0), 0);  // blocking
    EXPECT_FALSE(platform::tryWaitSemaphore(semaphore));
    const uint64_t full = std::numeric_limits<uint64_t>::max() - 1;
    ASSERT_EQ(::write(semaphore, &full, sizeof full), 8);
    platform::postSemaphore(semaphore);
    EXPECT_TRUE(platform::tryWaitSemaphore(semaphore));
    EXPECT_FALSE(waitFor(9999, kNoDescriptor, kNoDescriptor));
}

TEST(Names, AreReservedUntilTheyAreReleased) {
    int32_t first = kNoDescriptor;
    int32_t second = kNoDescriptor;
    EXPECT_EQ(platform::reserveName("9997", first), platform::Reservation::Reserved);
    EXPECT_EQ(platform::reserveName("9997", second), platform::Reservation::InUse);
    EXPECT_EQ(second, kNoDescriptor);
    EXPECT_EQ(platform::reserveName("9997VN", second), platform::Reservation::Reserved);
    platform::releaseName(second);
    platform::releaseName(first);
    EXPECT_EQ(platform::reserveName("9997", first), platform::Reservation::Reserved);
    platform::releaseName(first);
}

TEST(Blocks, KeepTheirSizeAndAreSeenFromBothSides) {
    constexpr size_t kSize = 0x20000;
    const int32_t block = platform::createBlock(kSize);
    EXPECT_TRUE(platform::blockHolds(block, kSize));
    EXPECT_FALSE(platform::blockHolds(block, kSize + 1));
    EXPECT_FALSE(platform::blockHolds(kNoDescriptor, 1));
    for (const off_t size : {off_t{0}, off_t{kSize - 1}, off_t{2 * kSize}}) {
        EXPECT_EQ(::ftruncate(block, size), -1);
    }
    EXPECT_EQ(::fcntl(block, F_ADD_SEALS, F_SEAL_FUTURE_WRITE), -1);
    auto* host = static_cast<char*>(platform::mapBlock(block, kSize));
    auto* module = static_cast<char*>(platform::mapBlock(block, kSize));
    std::strcpy(host + kSize - 8, "message");
    EXPECT_STREQ(module + kSize - 8, "message");
    platform::unmapBlock(host, kSize);
    platform::unmapBlock(module, kSize);
    platform::closeDescriptor(block);
    EXPECT_EQ(platform::mapBlock(block, kSize), nullptr);
}

}  // namespace
