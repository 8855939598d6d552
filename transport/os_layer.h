// The thin layer below the protocol: the shared block, the six semaphores and their waits, the
// start of a module program. Each primitive may have one implementation per kind of system;
// osLayer() chooses.
#pragma once

#include <vorn/types.h>

#include "transport/shared_stuff.h"

namespace vorn {

struct OsLayer {
    bool (*shmCreate)(uint32_t size, ShmDescriptor& shm);
    bool (*shmOpen)(ShmDescriptor& shm);
    uint8_t* (*shmMap)(const ShmDescriptor& shm);
    void (*shmUnmap)(const ShmDescriptor& shm, uint8_t* base);
    void (*shmDestroy)(ShmDescriptor& shm);
    void (*shmClose)(ShmDescriptor& shm);
    SemaphoreSet* (*semCreateSet)();
    bool (*semOpenSet)(SemaphoreSet* set);  // on failure the set is freed
    void (*semDestroySet)(SemaphoreSet* set);
    void (*semCloseSet)(SemaphoreSet* set);
    bool (*semWait)(SemaphoreSet& set, uint32_t entry);
    bool (*semTryWait)(SemaphoreSet& set, uint32_t entry);
    // False when the count is seen not to have been 0: the peer had not taken what came before.
    bool (*semPost)(SemaphoreSet& set, uint32_t entry);
};

// The one place where the kind of system decides.
const OsLayer& osLayer();

// Objects that the kernel holds.
extern const OsLayer kKernelObjects;

inline bool ShmCreate(uint32_t size, ShmDescriptor& shm) { return osLayer().shmCreate(size, shm); }
inline bool ShmOpen(ShmDescriptor& shm) { return osLayer().shmOpen(shm); }
inline uint8_t* ShmMap(const ShmDescriptor& shm) { return osLayer().shmMap(shm); }
inline void ShmUnmap(const ShmDescriptor& shm, uint8_t* base) { osLayer().shmUnmap(shm, base); }
inline void ShmDestroy(ShmDescriptor& shm) { osLayer().shmDestroy(shm); }
inline void ShmClose(ShmDescriptor& shm) { osLayer().shmClose(shm); }
inline SemaphoreSet* SemCreateSet() { return osLayer().semCreateSet(); }
inline bool SemOpenSet(SemaphoreSet* set) { return osLayer().semOpenSet(set); }
inline void SemDestroySet(SemaphoreSet* set) { osLayer().semDestroySet(set); }
inline void SemCloseSet(SemaphoreSet* set) { osLayer().semCloseSet(set); }
inline bool SemWait(SemaphoreSet& set, uint32_t entry) { return osLayer().semWait(set, entry); }
inline bool SemTryWait(SemaphoreSet& set, uint32_t entry) {
    return osLayer().semTryWait(set, entry);
}
inline bool SemPost(SemaphoreSet& set, uint32_t entry) { return osLayer().semPost(set, entry); }

}  // namespace vorn
