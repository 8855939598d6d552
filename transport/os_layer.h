// The thin layer below the protocol: the shared block, the six semaphores and their waits. Each
// primitive has one implementation per kind of system; osLayer() chooses.
#pragma once

#include <vorn/types.h>

#include <atomic>

#include "transport/shared_stuff.h"

namespace vorn {

inline constexpr size_t kMostInherited = 1 + kSemaphoreCount;

struct OsLayer {
    bool (*shmCreate)(uint32_t size, ShmDescriptor& shm);
    bool (*shmOpen)(ShmDescriptor& shm);
    uint8_t* (*shmMap)(const ShmDescriptor& shm);
    void (*shmUnmap)(const ShmDescriptor& shm, uint8_t* base);
    void (*shmDestroy)(ShmDescriptor& shm);
    void (*shmClose)(ShmDescriptor& shm);
    SemaphoreSet* (*semCreateSet)();
    bool (*semOpenSet)(SemaphoreSet* set);  // on failure the set is freed
    void (*semDestroySet)(SemaphoreSet* set);
    void (*semCloseSet)(SemaphoreSet* set);
    bool (*semWait)(SemaphoreSet& set, uint32_t entry);
    bool (*semTryWait)(SemaphoreSet& set, uint32_t entry);
    // False when the count is seen not to have been 0: the peer had not taken what came before.
    bool (*semPost)(SemaphoreSet& set, uint32_t entry);
    // The descriptors that a module program inherits, and their number.
    size_t (*inherited)(const SharedStuff& stuff, int32_t (&descriptors)[kMostInherited]);
    // Called when both the block and the semaphores are there.
    void (*shareCounts)(SharedStuff& stuff);
    // In a module program: lets limits that it meets be posted to the semaphore, see
    // platform/limits.h.
    void (*tellLimits)(const SemaphoreSet& set, uint32_t entry);
    bool modulesKnowTheirHost;  // a module keeps the number of its host's thread
};

// The one place where the kind of system decides.
const OsLayer& osLayer();

// Objects that the kernel holds.
extern const OsLayer kKernelObjects;
// Memory at the same address in both programs.
extern const OsLayer kGlobalBlocks;

// Waits and posts test the kind of system only once: the first of each kind in the program leaves
// its choice here for all later ones.
extern std::atomic<decltype(OsLayer::semWait)> waitRoutine;
extern std::atomic<decltype(OsLayer::semTryWait)> tryWaitRoutine;
extern std::atomic<decltype(OsLayer::semPost)> postRoutine;

inline bool ShmCreate(uint32_t size, ShmDescriptor& shm) { return osLayer().shmCreate(size, shm); }
inline bool ShmOpen(ShmDescriptor& shm) { return osLayer().shmOpen(shm); }
inline uint8_t* ShmMap(const ShmDescriptor& shm) { return osLayer().shmMap(shm); }
inline void ShmUnmap(const ShmDescriptor& shm, uint8_t* base) { osLayer().shmUnmap(shm, base); }
inline void ShmDestroy(ShmDescriptor& shm) { osLayer().shmDestroy(shm); }
inline void ShmClose(ShmDescriptor& shm) { osLayer().shmClose(shm); }
inline SemaphoreSet* SemCreateSet() { return osLayer().semCreateSet(); }
inline bool SemOpenSet(SemaphoreSet* set) { return osLayer().semOpenSet(set); }
inline void SemDestroySet(SemaphoreSet* set) { osLayer().semDestroySet(set); }
inline void SemCloseSet(SemaphoreSet* set) { osLayer().semCloseSet(set); }
inline bool SemWait(SemaphoreSet& set, uint32_t entry) {
    return waitRoutine.load(std::memory_order_relaxed)(set, entry);
}
inline bool SemTryWait(SemaphoreSet& set, uint32_t entry) {
    return tryWaitRoutine.load(std::memory_order_relaxed)(set, entry);
}
inline bool SemPost(SemaphoreSet& set, uint32_t entry) {
    return postRoutine.load(std::memory_order_relaxed)(set, entry);
}

}  // namespace vorn
