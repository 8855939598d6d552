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
struct alignas(64) SharedCount {
    uint32_t count;
};

// Adds 1 to the count. True when it was 0 before.
bool postShared(SharedCount& shared, int32_t semaphore, bool trustsPeer);

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
