// The objects that one connection between a host and a module program is made of: a block of shared
// memory and counting semaphores. The system's own names are a thing of systems that have them:
// here a name is only reserved, and the objects themselves are inherited by the one module program
// that is started with them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

inline constexpr int32_t kNoDescriptor = -1;

// Reserves a name for the user until the reservation is released or its holder ends, however it
// ends.
enum class Reservation { Reserved, InUse, Failed };
Reservation reserveName(const char* name, int32_t& reservation);
void releaseName(int32_t reservation);

// A block of shared memory that no side can shrink or grow. The name is one that the system shows.
// kNoDescriptor on failure.
int32_t createBlock(size_t size, const char* name = "vorn");
// True when the descriptor is a block of at least `size` bytes.
bool blockHolds(int32_t block, size_t size);
void* mapBlock(int32_t block, size_t size);
void unmapBlock(void* base, size_t size);

// A semaphore with count 0. kNoDescriptor on failure, as above with the reason in errno.
int32_t createSemaphore();
// True when the descriptor is open.
bool isSemaphore(int32_t semaphore);
// Never blocks, whatever the other program has done to the semaphore. True when the count was 0
// before.
bool postSemaphore(int32_t semaphore);
// For a program that trusts the other one: half the calls to the system.
void postTrustedSemaphore(int32_t semaphore);
bool tryWaitSemaphore(int32_t semaphore);

// What a waiter remembers from one wait on a semaphore to the next. Starts as zeros.
struct WaitHistory {
    uint32_t misses = 0;  // tries in a row that did not pay
    uint32_t skip = 0;    // waits that are not worth a try before the next one
    bool pays = false;    // the last try paid
    bool waited = false;  // not the first wait
};

// Blocks until the semaphore was taken (true), or the watched process has ended or the stop
// semaphore is posted with the count still at 0 (false; the stop stays posted). kNoDescriptor
// watches nothing. Before it blocks, the waiter tries for a few microseconds, as waking it up would
// cost more; it does so only while that has lately paid, and never on a single processor.
bool waitSemaphore(int32_t semaphore, int32_t watched, int32_t stop, WaitHistory& history);

void closeDescriptor(int32_t descriptor);

}  // namespace vorn::platform
