// The transport's primitives on a system without kernel objects: global memory blocks that both
// programs see at one address, counters of one byte, and waits that spin and pump the thread's
// messages.
#include <algorithm>
#include <cstring>

#include "platform/global_memory.h"
#include "platform/limits.h"
#include "platform/thread_messages.h"
#include "support/memory.h"
#include "transport/os_layer.h"

namespace vorn {
namespace {

// A handle is an address here, and the reservation is what a module inherits to see it.

constexpr size_t kCountersSize = kSemaphoreCount;

bool shmCreate(uint32_t size, ShmDescriptor& shm) {
    shm = ShmDescriptor{"VORN", 0, platform::kNoDescriptor};
    shm.handle = platform::allocGlobal(size, shm.reservation);
    return shm.handle != 0;
}

bool shmOpen(ShmDescriptor& shm) {
    shm.reservation = platform::kNoDescriptor;
    if (platform::lockGlobal(shm.handle, kSharedAreaSize)) return true;
    shm.handle = 0;
    return false;
}

uint8_t* shmMap(const ShmDescriptor& shm) {
    return static_cast<uint8_t*>(platform::globalPlace(shm.handle));
}

void shmUnmap(const ShmDescriptor&, uint8_t*) {}

void shmDestroy(ShmDescriptor& shm) {
    if (shm.handle) platform::freeGlobal(shm.handle, kSharedAreaSize, shm.reservation);
    shm = ShmDescriptor{{}, 0, platform::kNoDescriptor};
}

void shmClose(ShmDescriptor& shm) {
    if (shm.handle) platform::unlockGlobal(shm.handle, kSharedAreaSize);
    shm.handle = 0;
}

void placeCounters(SemaphoreSet& set, int32_t address) {
    for (int i = 0; i < kSemaphoreCount; ++i) set.entry[i].handle = address + i;
}

SemaphoreSet* semCreateSet() {
    SemaphoreSet* set = allocCleared<SemaphoreSet>().release();
    if (!set) return nullptr;
    set->watched = set->stop = platform::kNoDescriptor;
    const int32_t address = platform::allocGlobal(kCountersSize, set->reservation);
    if (!address) {
        FreeMemory(set);
        return nullptr;
    }
    placeCounters(*set, address);
    for (int i = 0; i < kSemaphoreCount; ++i) {
        std::memcpy(set->entry[i].name, "0VN", sizeof "0VN");
        set->entry[i].name[0] = static_cast<char>('0' + i);
    }
    return set;
}

bool semOpenSet(SemaphoreSet* set) {
    set->reservation = platform::kNoDescriptor;
    if (platform::lockGlobal(set->entry[0].handle, kCountersSize)) {
        placeCounters(*set, set->entry[0].handle);
        return true;
    }
    FreeMemory(set);
    return false;
}

void semDestroySet(SemaphoreSet* set) {
    platform::freeGlobal(set->entry[0].handle, kCountersSize, set->reservation);
    FreeMemory(set);
}

void semCloseSet(SemaphoreSet* set) {
    platform::unlockGlobal(set->entry[0].handle, kCountersSize);
    FreeMemory(set);
}

uint8_t* counterAt(int32_t address) {
    return static_cast<uint8_t*>(platform::globalPlace(address));
}

uint8_t* counterOf(const SemaphoreSet& set, uint32_t entry) {
    return counterAt(set.entry[entry].handle);
}

bool semTryWait(SemaphoreSet& set, uint32_t entry) {
    uint8_t* counter = counterOf(set, entry);
    uint8_t count = __atomic_load_n(counter, __ATOMIC_RELAXED);
    while (count > 0) {
        if (__atomic_compare_exchange_n(counter, &count, static_cast<uint8_t>(count - 1), true,
                                        __ATOMIC_ACQUIRE, __ATOMIC_RELAXED)) {
            return true;
        }
    }
    return false;
}

void spin(const SemaphoreSet& set, uint32_t entry) {
    constexpr int kSpins = 200;
    const uint8_t* counter = counterOf(set, entry);
    for (int i = 0; i < kSpins && __atomic_load_n(counter, __ATOMIC_RELAXED) == 0; ++i) {
    }
}

// Gives the peer a chance to run, and the waiting program its messages.
void pump(const SemaphoreSet& set) {
    if (set.peerThread != 0) platform::postThreadMessage(set.peerThread, {});
    platform::ThreadMessage message;
    if (platform::peekThreadMessage(message)) platform::dispatchThreadMessage(message);
}

// The first passes don't sleep; later ones sleep longer and longer, up to a millisecond, so that a
// program that waits for nothing in particular costs nothing to speak of.
int32_t sleepOf(uint32_t pass) {
    constexpr uint32_t kSleepless = 4;
    constexpr uint32_t kDoublings = 5;
    return pass < kSleepless ? 0 : 32 << std::min(pass - kSleepless, kDoublings);
}

// A program that is gone posts nothing any more, so each pass looks for the peer's end, and for the
// emergency stop.
bool semWait(SemaphoreSet& set, uint32_t entry) {
    for (uint32_t pass = 0; !semTryWait(set, entry); ++pass) {
        spin(set, entry);
        pump(set);
        if (platform::pauseForMessage(set.watched, set.stop, sleepOf(pass)))
            return semTryWait(set, entry);
    }
    return true;
}

bool postCounter(int32_t address) {
    return __atomic_fetch_add(counterAt(address), uint8_t{1}, __ATOMIC_RELEASE) == 0;
}

bool semPost(SemaphoreSet& set, uint32_t entry) { return postCounter(set.entry[entry].handle); }

size_t inherited(const SharedStuff& stuff, int32_t (&descriptors)[kMostInherited]) {
    descriptors[0] = stuff.shm.reservation;
    descriptors[1] = stuff.semaphores->reservation;
    return 2;
}

void shareCounts(SharedStuff&) {}

void tellLimits(const SemaphoreSet& set, uint32_t entry) {
    platform::tellLimits(set.entry[entry].handle, postCounter);
}

}  // namespace

const OsLayer kGlobalBlocks = {
    .shmCreate = shmCreate,
    .shmOpen = shmOpen,
    .shmMap = shmMap,
    .shmUnmap = shmUnmap,
    .shmDestroy = shmDestroy,
    .shmClose = shmClose,
    .semCreateSet = semCreateSet,
    .semOpenSet = semOpenSet,
    .semDestroySet = semDestroySet,
    .semCloseSet = semCloseSet,
    .semWait = semWait,
    .semTryWait = semTryWait,
    .semPost = semPost,
    .inherited = inherited,
    .shareCounts = shareCounts,
    .tellLimits = tellLimits,
    .modulesKnowTheirHost = false,
};

}  // namespace vorn
