#include <vorn/support.h>

#include <cstddef>

namespace {

// Stands in front of every tracked block. Its alignment keeps the block behind it aligned for any
// type.
struct alignas(std::max_align_t) TrackedBlock {
    TrackedBlock* next;
};

}  // namespace

struct VORN_Tracker {
    TrackedBlock* blocks;
};

extern "C" {

VORN_Tracker* AllocTracker(void) {
    return static_cast<VORN_Tracker*>(AllocMemory(sizeof(VORN_Tracker), MEMORY_Clear));
}

void* AllocMemoryTracked(VORN_Tracker* tracker, size_t size, uint32_t flags) {
    if (!tracker || size > SIZE_MAX - sizeof(TrackedBlock)) return nullptr;
    auto* block = static_cast<TrackedBlock*>(AllocMemory(sizeof(TrackedBlock) + size, flags));
    if (!block) return nullptr;
    block->next = tracker->blocks;
    tracker->blocks = block;
    return block + 1;
}

void FreeTracker(VORN_Tracker* tracker) {
    if (!tracker) return;
    for (TrackedBlock* block = tracker->blocks; block != nullptr;) {
        TrackedBlock* next = block->next;
        FreeMemory(block);
        block = next;
    }
    FreeMemory(tracker);
}

}  // extern "C"
