// The transport's primitives over objects that the kernel holds. Names follow the protocol: the
// lowest free number wins, so two connections never share one.
#include <charconv>
#include <cstdio>
#include <new>

#include "platform/connection.h"
#include "platform/limits.h"
#include "support/memory.h"
#include "transport/os_layer.h"

namespace vorn {
namespace {

constexpr int kLastBlockName = 9998;
constexpr int kLastSemaphoreName = 9999;
constexpr uint32_t kCountsSize = 0x1000;
static_assert(sizeof(SharedCounts) <= kCountsSize);

bool shmCreate(uint32_t size, ShmDescriptor& shm) {
    shm = ShmDescriptor{{}, 0, platform::kNoDescriptor};
    auto taken = platform::Reservation::InUse;
    for (int k = 1; k <= kLastBlockName && taken == platform::Reservation::InUse; ++k) {
        *std::to_chars(shm.name, shm.name + sizeof shm.name - 1, k).ptr = '\0';
        taken = platform::reserveName(shm.name, shm.reservation);
    }
    if (taken != platform::Reservation::Reserved) return false;
    const int32_t block = platform::createBlock(size + kCountsSize);
    if (block != platform::kNoDescriptor) {
        shm.handle = block;
        return true;
    }
    platform::releaseName(shm.reservation);
    shm.reservation = platform::kNoDescriptor;
    return false;
}

// A module inherits the block under the number that the host gave.
bool shmOpen(ShmDescriptor& shm) {
    shm.reservation = platform::kNoDescriptor;
    if (shm.handle > 0 && platform::blockHolds(shm.handle, kSharedAreaSize)) return true;
    shm.handle = 0;
    return false;
}

// A block without counts is mapped all the same; only what is there is touched.
uint8_t* shmMap(const ShmDescriptor& shm) {
    return static_cast<uint8_t*>(platform::mapBlock(shm.handle, kSharedAreaSize + kCountsSize));
}

void shmUnmap(const ShmDescriptor&, uint8_t* base) {
    platform::unmapBlock(base, kSharedAreaSize + kCountsSize);
}

void shmDestroy(ShmDescriptor& shm) {
    if (shm.handle > 0) platform::closeDescriptor(shm.handle);
    platform::releaseName(shm.reservation);
    shm = ShmDescriptor{{}, 0, platform::kNoDescriptor};
}

void shmClose(ShmDescriptor& shm) {
    if (shm.handle > 0) platform::closeDescriptor(shm.handle);
    shm.handle = 0;
}

// Sets are made by this function alone, always of six names in a row: the first name of a set
// stands for all of them, and one reservation serves where six would cost six descriptors.
bool reserveNames(SemaphoreSet& set) {
    for (int first = 1; first + kSemaphoreCount - 1 <= kLastSemaphoreName;
         first += kSemaphoreCount) {
        for (int i = 0; i < kSemaphoreCount; ++i) {
            std::snprintf(set.entry[i].name, sizeof set.entry[i].name, "%dVN", first + i);
        }
        const auto taken = platform::reserveName(set.entry[0].name, set.reservation);
        if (taken != platform::Reservation::InUse) return taken == platform::Reservation::Reserved;
    }
    return false;
}

void semDestroySet(SemaphoreSet* set) {
    for (auto& entry : set->entry) platform::closeDescriptor(entry.handle);
    platform::releaseName(set->reservation);
    FreeMemory(set);
}

SemaphoreSet* semCreateSet() {
    SemaphoreSet* set = allocCleared<SemaphoreSet>().release();
    if (!set) return nullptr;
    set->reservation = set->watched = set->stop = platform::kNoDescriptor;
    for (auto& entry : set->entry) entry.handle = platform::kNoDescriptor;
    bool made = reserveNames(*set);
    for (auto& entry : set->entry) {
        if (made) entry.handle = platform::createSemaphore();
        made = made && entry.handle != platform::kNoDescriptor;
    }
    if (made) return set;
    semDestroySet(set);
    return nullptr;
}

bool semOpenSet(SemaphoreSet* set) {
    set->reservation = platform::kNoDescriptor;
    for (const auto& entry : set->entry) {
        if (entry.handle > 0 && platform::isSemaphore(entry.handle)) continue;
        FreeMemory(set);
        return false;
    }
    return true;
}

bool modulesCounts(const SharedCounts& counts) {
    return __atomic_load_n(&counts.moduleCounts, __ATOMIC_ACQUIRE) != 0;
}

// A module looks for the counts before its first wait, and says that it does.
void shareCounts(SharedStuff& stuff) {
    if (!platform::blockHolds(stuff.shm.handle, kSharedAreaSize + kCountsSize)) return;
    SemaphoreSet& set = *stuff.semaphores;
    set.counts = reinterpret_cast<SharedCounts*>(stuff.base + kSharedAreaSize);
    if (set.trustsPeer) __atomic_store_n(&set.counts->moduleCounts, 1u, __ATOMIC_RELEASE);
}

bool semWait(SemaphoreSet& set, uint32_t entry) {
    auto& [name, handle, history] = set.entry[entry];
    if (!set.counts) return platform::waitSemaphore(handle, set.watched, set.stop, history);
    platform::SharedCount& count = set.counts->entry[entry];
    if (platform::takeShared(count, handle)) return true;
    const bool alsoSystem = !modulesCounts(*set.counts);
    return platform::waitShared(count, handle, alsoSystem, set.watched, set.stop, history);
}

bool semTryWait(SemaphoreSet& set, uint32_t entry) {
    const int32_t semaphore = set.entry[entry].handle;
    return set.counts ? platform::tryWaitShared(set.counts->entry[entry], semaphore)
                      : platform::tryWaitSemaphore(semaphore);
}

// A host posts to the counts when its module is known to look there.
bool semPost(SemaphoreSet& set, uint32_t entry) {
    const int32_t semaphore = set.entry[entry].handle;
    if (set.counts && modulesCounts(*set.counts))
        return platform::postShared(set.counts->entry[entry], semaphore, set.trustsPeer);
    if (!set.trustsPeer) return platform::postSemaphore(semaphore);
    platform::postTrustedSemaphore(semaphore);
    return true;
}

size_t inherited(const SharedStuff& stuff, int32_t (&descriptors)[kMostInherited]) {
    size_t count = 0;
    descriptors[count++] = stuff.shm.handle;
    for (const auto& entry : stuff.semaphores->entry) descriptors[count++] = entry.handle;
    return count;
}

void tellLimits(const SemaphoreSet& set, uint32_t entry) {
    platform::tellLimits(set.entry[entry].handle, platform::postSemaphore);
}

}  // namespace

const OsLayer kKernelObjects = {
    .shmCreate = shmCreate,
    .shmOpen = shmOpen,
    .shmMap = shmMap,
    .shmUnmap = shmUnmap,
    .shmDestroy = shmDestroy,
    .shmClose = shmClose,
    .semCreateSet = semCreateSet,
    .semOpenSet = semOpenSet,
    .semDestroySet = semDestroySet,
    .semCloseSet = semDestroySet,
    .semWait = semWait,
    .semTryWait = semTryWait,
    .semPost = semPost,
    .inherited = inherited,
    .shareCounts = shareCounts,
    .tellLimits = tellLimits,
    .modulesKnowTheirHost = true,
};

}  // namespace vorn
