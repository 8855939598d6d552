#include "support/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/scratch_home.h"
#include "tests/support/failing_memory.h"

namespace {

bool isClear(const void* block, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(block);
    return std::all_of(bytes, bytes + size, [](uint8_t byte) { return byte == 0; });
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

TEST(Scratch, IsZeroedMemoryInAFileWithoutAName) {
    const ScratchDirectory scratch;
    const ScopedVariable chosen("TMPDIR", scratch.path());
    constexpr size_t kSize = size_t{3} << 20;
    void* const bytes = AllocScratch(kSize);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(BGetErrorCode(), 0);
    EXPECT_TRUE(isClear(bytes, kSize));
    std::memset(bytes, 7, kSize);
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
    FreeScratch(bytes);
    FreeScratch(nullptr);
}

TEST(Scratch, SaysWhyThereIsNone) {
    const ScratchDirectory scratch;
    const ScopedVariable chosen("TMPDIR", scratch.path());
    std::vector<size_t> sizes = {SIZE_MAX};
    if (sizeof(size_t) > 4) sizes.insert(sizes.end(), {SIZE_MAX / 2, SIZE_MAX / 4});
    for (const size_t size : sizes) {  // no disk, or no memory, is as large
        EXPECT_EQ(AllocScratch(size), nullptr);
        EXPECT_NE(BGetErrorCode(), 0);
    }
    const ScopedVariable missing("TMPDIR", scratch.path("missing"));
    EXPECT_EQ(AllocScratch(1), nullptr);
    EXPECT_EQ(BGetErrorCode(), ENOENT);
    EXPECT_EQ(ScratchFolder(), scratch.path("missing"));
}

}  // namespace
