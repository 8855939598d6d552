#include "platform/shared_count.h"

#include "platform/posix/waits.h"

namespace vorn::platform {
namespace {

constexpr uint32_t kSleeps = 0x80000000;
constexpr int kMostTakes = 100;  // a peer that changes the count all the time can't hold us here

// Takes 1 away and with it the word that the waiter sleeps. `wanted` are bits that must be set.
bool take(SharedCount& shared, int32_t semaphore, uint32_t wanted = 0) {
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

}  // namespace

// What wakes a waiter is the system's semaphore, to which the count is moved.
bool postShared(SharedCount& shared, int32_t semaphore, bool trustsPeer) {
    orderAsPosted(semaphore);
    const uint32_t before = __atomic_fetch_add(&shared.count, 1u, __ATOMIC_RELEASE);
    const bool wasZero = (before & ~kSleeps) == 0;
    if (!(before & kSleeps) || !take(shared, semaphore, kSleeps)) return wasZero;
    if (!trustsPeer) return postSemaphore(semaphore) && wasZero;
    postTrustedSemaphore(semaphore);
    return wasZero;
}

bool tryWaitShared(SharedCount& shared, int32_t semaphore) {
    return take(shared, semaphore) || tryWaitSemaphore(semaphore);
}

bool waitShared(SharedCount& shared,
                int32_t semaphore,
                bool alsoSystem,
                int32_t watched,
                int32_t stop,
                WaitHistory& history) {
    const auto tryBoth = [&] { return tryWaitShared(shared, semaphore); };
    // The first post may have come before the other program was known.
    const bool first = !history.waited;
    history.waited = true;
    if (first || alsoSystem ? tryBoth() : take(shared, semaphore)) return true;
    if (tryForAWhile(history, [&] { return alsoSystem ? tryBoth() : take(shared, semaphore); }))
        return true;
    const auto tryLast = [&] {
        __atomic_fetch_or(&shared.count, kSleeps, __ATOMIC_RELAXED);
        return tryBoth();
    };
    const bool taken = tryLast() || sleepUntilTaken(semaphore, watched, stop, tryLast);
    __atomic_fetch_and(&shared.count, ~kSleeps, __ATOMIC_RELAXED);
    return taken;
}

}  // namespace vorn::platform
