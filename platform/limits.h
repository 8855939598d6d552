// The limits that a host has set for its module program, seen from the program.
#pragma once

#include <cstdint>

namespace vorn::platform {

// Why a program ends that meets a limit, as it posts it: so many posts.
inline constexpr int32_t kTimeLimitPosts = 1;
inline constexpr int32_t kMemoryLimitPosts = 2;

// In a module program: a limit that it meets from now on is posted to the semaphore, by a function
// that a signal handler may call, at the moment when the system ends the program for its processor
// time, and when an allocation with the language's own means fails under a limit of memory, which
// few programs survive. What the program has itself arranged for either stays as it is.
void tellLimits(int32_t semaphore, bool (*post)(int32_t semaphore));

// In a module program: lets the system end the program, whatever it does, when it goes on for more
// than kLastMilliseconds without its host. Until this is called, or where the program has arranged
// something for SIGIO before, that signal alone tells it. Programs that know nothing of it are
// ended by it at once.
void endWithHost();

// In a module program: tells of memory now, as the handler for failed allocations does. For
// programs whose allocations have another handler than this library's.
void tellMemoryLimit();

}  // namespace vorn::platform
