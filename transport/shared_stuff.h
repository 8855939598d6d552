// One side's view of a connection, and the semaphores and memory below it.
#pragma once

#include <vorn/library.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "platform/connection.h"
#include "platform/shared_count.h"

namespace vorn {

inline constexpr uint32_t kSharedAreaSize = 0x20000;
inline constexpr uint32_t kBigAreaSize =
    0x18000;  // pixels: to the host for a loader, to the module for a saver
inline constexpr uint32_t kSmallAreaSize = 0x8000;
inline constexpr int32_t kSemaphoreCount = 6;

// Behind the areas, where the system holds the semaphores: their counts as the two programs share
// them. A program that doesn't know of it leaves it alone. All counts lie on one cache line: who
// has got a full area mostly frees it, takes the other one and posts that, and has to fetch the
// line from the other processor only once for all four.
struct SharedCounts {
    uint32_t moduleCounts;  // the module program says: it looks here, too
    alignas(64) platform::SharedCount entry[kSemaphoreCount];
};
static_assert(offsetof(SharedCounts, entry) == 64 && sizeof(platform::SharedCount) == 4,
              "docs/protocol.md says where");

struct ShmDescriptor {
    char name[8];
    int32_t handle;  // a descriptor or an address, as the system has it; 0 = none
    int32_t reservation;
};

struct SemaphoreSet {
    struct Entry {
        char name[12];
        int32_t handle;
        platform::WaitHistory waits;
    };
    Entry entry[kSemaphoreCount];
    int32_t reservation;
    int32_t peerThread;    // number of the peer's main thread
    int32_t watched;       // the peer's program: every wait also ends on its end
    int32_t stop;          // every wait also ends when this is posted (a host's emergency stop)
    bool trustsPeer;       // a module its host; a host no module
    SharedCounts* counts;  // in the shared memory; null without
};

// What belongs to the side's own thread.
struct SharedStuffFields {
    VORN_Image* owner;  // on a host: where errors of the lock functions go
    vorn::ShmDescriptor shm;
    vorn::SemaphoreSet* semaphores;
    uint32_t waitBeforeWrite;
    uint32_t postAfterWrite;
    uint32_t waitBeforeRead;
    uint32_t postAfterRead;
    uint32_t spareForThisSide;
    uint32_t spareForPeer;
    uint8_t* base;
    int32_t writeOffset;
    int32_t readOffset;
    int32_t writeSize;
    int32_t readSize;
    uint8_t* writePointer;
    uint8_t* readPointer;
    bool readHeld;
    int32_t downCode;  // on a host: the error of every call while the link is down; 0: kErrorLink
};

}  // namespace vorn

struct SharedStuff : vorn::SharedStuffFields {
    std::atomic<bool> linkDown;  // set by the emergency stop from another thread, at any moment
};
