#include "platform/shared_count.h"

#include <sys/uio.h>
#include <unistd.h>

#include "platform/posix/waits.h"

namespace vorn::platform {

#if defined(__SANITIZE_THREAD__)
void orderAsPosted(int32_t semaphore) { (void)!::write(semaphore, nullptr, 0); }
void orderAsTaken(int32_t semaphore) { (void)!::readv(semaphore, nullptr, 0); }
#endif

// What wakes a waiter is the system's semaphore, to which the count is moved.
bool wakeShared(SharedCount& shared, int32_t semaphore, bool trustsPeer, bool wasZero) {
    if (!takeShared(shared, semaphore, kSleeps)) return wasZero;
    if (!trustsPeer) return postSemaphore(semaphore) && wasZero;
    postTrustedSemaphore(semaphore);
    return wasZero;
}

bool tryWaitShared(SharedCount& shared, int32_t semaphore) {
    return takeShared(shared, semaphore) || tryWaitSemaphore(semaphore);
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
    if (first || alsoSystem ? tryBoth() : takeShared(shared, semaphore)) return true;
    if (alsoSystem ? tryForAWhile(history, tryBoth)
                   : tryForAWhile(history, [&] { return takeShared(shared, semaphore); }))
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
