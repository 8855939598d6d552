// How every wait on a semaphore goes, whatever takes it: first it tries for a while, then it
// sleeps.
#pragma once

#include <poll.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include "platform/shared_count.h"

namespace vorn::platform {

inline bool hasSeveralProcessors() {
    cpu_set_t set;
    return ::sched_getaffinity(0, sizeof set, &set) != 0 || CPU_COUNT(&set) > 1;
}

// A hand-off between two processors takes less than a microsecond when the waiter is awake, and
// tens of them when it has to be woken.
inline constexpr std::chrono::microseconds kTryTime{20};
inline constexpr int kTriesBetweenLooks = 16;  // at the clock, which takes longer than a hand-off
inline constexpr uint32_t kMostSkipped = 64;

// Leaves what the processor shares to whom it waits for.
inline void pauseProcessor() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

template <class Try>
bool tryUntil(std::chrono::steady_clock::time_point end, Try tryOnce) {
    do {
        for (int i = 0; i < kTriesBetweenLooks; ++i) {
            if (tryOnce()) return true;
            pauseProcessor();
        }
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

// True when a try took the semaphore.
template <class Try>
bool tryForAWhile(WaitHistory& history, Try tryOnce) {
    if (history.skip > 0) {
        --history.skip;
        return false;
    }
    // A first look that is not at the clock: what has lately paid does so again, mostly at once.
    const bool taken = (history.pays && tryUntil({}, tryOnce)) ||
                       ((history.pays || hasSeveralProcessors()) &&
                        tryUntil(std::chrono::steady_clock::now() + kTryTime, tryOnce));
    history.pays = taken;
    if (taken) {
        history.misses = 0;
        return true;
    }
    // Twice as many waits go by untried after every try that did not pay.
    history.skip = std::min(1u << std::min(history.misses, 16u), kMostSkipped);
    ++history.misses;
    return false;
}

// Sleeps until a try takes the semaphore (true), or the watched process has ended or the stop
// semaphore is posted and a last try took nothing: what the peer posted last counts after its end.
template <class Try>
bool sleepUntilTaken(int32_t semaphore, int32_t watched, int32_t stop, Try tryOnce) {
    for (;;) {
        // poll ignores kNoDescriptor
        pollfd waits[3] = {{semaphore, POLLIN, 0}, {watched, POLLIN, 0}, {stop, POLLIN, 0}};
        if (::poll(waits, 3, -1) < 0) {
            if (errno != EINTR) return false;
            continue;
        }
        if (tryOnce()) return true;
        if (waits[0].revents & (POLLERR | POLLNVAL)) return false;
        if (waits[1].revents != 0 || waits[2].revents != 0) return tryOnce();
    }
}

}  // namespace vorn::platform
