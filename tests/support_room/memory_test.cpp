#include "support/memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "tests/support/failing_memory.h"

namespace {

bool isClear(const void* block, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(block);
    for (size_t i = 0; i < size; ++i) {
        if (bytes[i] != 0) return false;
    }
    return true;
}

TEST(Memory, IsClearedWhenAskedAndNeverNullForNothing) {
    for (int round = 0; round < 4; ++round) {  // blocks that were used before come back
        void* block = AllocMemory(1000, MEMORY_Clear);
        EXPECT_TRUE(isClear(block, 1000));
        std::memset(block, 0xAA, 1000);
        FreeMemory(block);
    }
    void* nothing = AllocMemFunction(0, 0);
    EXPECT_NE(nothing, nullptr);
    FreeMemFunction(nothing);
    FreeMemory(nullptr);
}

TEST(Memory, CopiesStrings) {
    char text[] = "text";
    char* copy = AllocString(text);
    text[0] = 'T';
    EXPECT_STREQ(copy, "text");
    FreeMemory(copy);
    char* empty = AllocString("");
    EXPECT_STREQ(empty, "");
    FreeMemory(empty);
}

TEST(Tracker, OwnsBlocksThatSuitAnyType) {
    VORN_Tracker* tracker = AllocTracker();
    for (size_t size = 0; size < 100; ++size) {
        auto* block = static_cast<char*>(AllocMemoryTracked(tracker, size, MEMORY_Clear));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignof(std::max_align_t), 0u);
        EXPECT_TRUE(isClear(block, size));
        std::memset(block, 0xAA, size);
    }
    FreeTracker(tracker);  // all of them: the address sanitizer would tell
    FreeTracker(nullptr);
}

TEST(Tracker, FailsWithoutMemoryOrTracker) {
    EXPECT_EQ(AllocMemoryTracked(nullptr, 8, 0), nullptr);
    failAtEachAllocation([](auto withFailure) {
        VORN_Tracker* made = AllocTracker();
        const auto [block, failed] = withFailure([&] { return AllocMemoryTracked(made, 8, 0); });
        EXPECT_EQ(block == nullptr, failed);
        FreeTracker(made);
    });
    VORN_Tracker* tracker = AllocTracker();
    EXPECT_EQ(AllocMemoryTracked(tracker, SIZE_MAX, 0), nullptr);
    EXPECT_EQ(AllocMemoryTracked(tracker, SIZE_MAX - 8, 0), nullptr);
    FreeTracker(tracker);
}

}  // namespace
