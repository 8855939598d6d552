// Semaphores of two programs that share memory: the count lies in the memory, so that the system is
// called only to wake a waiter that sleeps. Each has a semaphore of the system's beside it, which
// counts too: what is posted to either may be taken, and a program that knows only that one can
// take part.
#pragma once

#include <cstdint>

#include "platform/connection.h"

namespace vorn::platform {

// Lies in the shared memory, as zeros in the beginning. The other program may write anything here
// at any moment; so much can come of it as of posting too often, or not at all.
// The top bit is set while the waiter sleeps, or is about to; one word, because each look at it may
// have to fetch it from the other processor. A semaphore has one waiter.
struct SharedCount {
    uint32_t count;
};

// The thread sanitizer knows that writing to a descriptor and reading from it, also nothing, order
// threads. It doesn't know preadv2, nor that two mappings are of one memory.
#if defined(__SANITIZE_THREAD__)
void orderAsPosted(int32_t semaphore);
void orderAsTaken(int32_t semaphore);
#else
inline void orderAsPosted(int32_t) {}
inline void orderAsTaken(int32_t) {}
#endif

inline constexpr uint32_t kSleeps = 0x80000000;

// Takes 1 away and with it the word that the waiter sleeps. `wanted` are bits that must be set.
inline bool takeShared(SharedCount& shared, int32_t semaphore, uint32_t wanted = 0) {
    constexpr int kMostTakes = 100;  // a peer that changes the count all the time can't hold us
    uint32_t now = __atomic_load_n(&shared.count, __ATOMIC_RELAXED);
    for (int i = 0; i < kMostTakes && (now & ~kSleeps) > 0 && (now & wanted) == wanted; ++i) {
        if (__atomic_compare_exchange_n(&shared.count, &now, (now & ~kSleeps) - 1, true,
                                        __ATOMIC_ACQUIRE, __ATOMIC_RELAXED)) {
            orderAsTaken(semaphore);
            return true;
        }
    }
    return false;
}

// What postShared does when the waiter sleeps.
bool wakeShared(SharedCount& shared, int32_t semaphore, bool trustsPeer, bool wasZero);

// Adds 1 to the count. True when it was 0 before.
inline bool postShared(SharedCount& shared, int32_t semaphore, bool trustsPeer) {
    orderAsPosted(semaphore);
    const uint32_t before = __atomic_fetch_add(&shared.count, 1u, __ATOMIC_RELEASE);
    const bool wasZero = (before & ~kSleeps) == 0;
    return (before & kSleeps) ? wakeShared(shared, semaphore, trustsPeer, wasZero) : wasZero;
}

bool tryWaitShared(SharedCount& shared, int32_t semaphore);

// As waitSemaphore. While the waiter tries, it looks at the system's semaphore too only if
// `alsoSystem`: when the other program may post nowhere else.
bool waitShared(SharedCount& shared,
                int32_t semaphore,
                bool alsoSystem,
                int32_t watched,
                int32_t stop,
                WaitHistory& history);

}  // namespace vorn::platform
