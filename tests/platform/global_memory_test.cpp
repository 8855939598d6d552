#include "platform/global_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "platform/connection.h"

namespace {

using namespace vorn;

TEST(GlobalMemory, IsClearedAndLiesBelowTwoGigabytes) {
    int32_t descriptors[3], addresses[3];
    for (int i = 0; i < 3; ++i) {
        addresses[i] = platform::allocGlobal(200000, descriptors[i]);
        ASSERT_GT(addresses[i], 0);
        auto* bytes = static_cast<uint8_t*>(platform::globalPlace(addresses[i]));
        EXPECT_EQ(std::count(bytes, bytes + 200000, 0), 200000);
        std::memset(bytes, 1, 200000);
    }
    for (int i = 0; i < 3; ++i) platform::freeGlobal(addresses[i], 200000, descriptors[i]);
    // The range is free again.
    EXPECT_EQ(platform::allocGlobal(10, descriptors[0]), addresses[0]);
    platform::freeGlobal(addresses[0], 10, descriptors[0]);
}

TEST(GlobalMemory, AppearsOnlyAsTheInheritedBlockOfThatAddressWhereNothingElseIs) {
    int32_t descriptor = 0;
    const int32_t address = platform::allocGlobal(100, descriptor);
    auto* bytes = static_cast<char*>(platform::globalPlace(address));
    std::strcpy(bytes, "there");
    EXPECT_FALSE(platform::lockGlobal(address, 100));  // it is there already
    platform::unlockGlobal(address, 100);
    EXPECT_FALSE(platform::lockGlobal(address + 0x100000, 100));
    EXPECT_FALSE(platform::lockGlobal(0, 100));
    EXPECT_FALSE(platform::lockGlobal(-address, 100));
    EXPECT_FALSE(platform::lockGlobal(address, 101));
    // As in a module program, which inherits the descriptor.
    ASSERT_NE(descriptor, platform::kNoDescriptor);
    ASSERT_TRUE(platform::lockGlobal(address, 100));
    EXPECT_STREQ(bytes, "there");
    EXPECT_FALSE(platform::isSemaphore(descriptor));  // the block needs it no more
    platform::unlockGlobal(address, 100);
}

}  // namespace
