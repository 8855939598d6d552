#include "transport/connection.h"

#include <cerrno>

#include "errors/error_numbers.h"
#include "platform/connection.h"
#include "transport/image.h"
#include "transport/os_layer.h"

namespace vorn {
namespace {

// The link's flag is not made anew: the emergency stop may be setting it.
void clearRecord(SharedStuff& stuff) {
    VORN_Image* owner = stuff.owner;
    static_cast<SharedStuffFields&>(stuff) = SharedStuffFields{};
    stuff.owner = owner;
    stuff.shm.reservation = platform::kNoDescriptor;
    stuff.linkDown = true;
}

void setRoles(SharedStuff& stuff) {
    stuff.waitBeforeWrite = 0;
    stuff.postAfterWrite = 1;
    stuff.waitBeforeRead = 2;
    stuff.postAfterRead = 3;
    stuff.spareForThisSide = 4;
    stuff.spareForPeer = 5;
}

// The big area lies first and carries the pixels. New memory holds zeros, so none is written here:
// what is never used takes no room.
void layOut(SharedStuff& stuff, bool loader) {
    const auto big = static_cast<int32_t>(kBigAreaSize);
    const auto small = static_cast<int32_t>(kSmallAreaSize);
    stuff.readOffset = loader ? 0 : big;
    stuff.readSize = loader ? big : small;
    stuff.writeOffset = loader ? big : 0;
    stuff.writeSize = loader ? small : big;
    stuff.writePointer = stuff.base + stuff.writeOffset;
    stuff.readPointer = stuff.base + stuff.readOffset;
}

}  // namespace

bool SharedStuffCreate(VORN_Image& image, int32_t moduleType) {
    SharedStuff& stuff = image.stuff;
    clearRecord(stuff);
    errno = 0;
    if (ShmCreate(kSharedAreaSize, stuff.shm)) stuff.base = ShmMap(stuff.shm);
    if (stuff.base) errno = 0;  // a name that was in use is no reason
    if (stuff.base) stuff.semaphores = SemCreateSet();
    if (!stuff.semaphores) {
        VORN_L_SetErrorCode(&image, kErrorMemory, errno);
        SharedStuffClose(image);
        return false;
    }
    osLayer().shareCounts(stuff);
    setRoles(stuff);
    const bool loader = moduleType == VORN_LOADER;
    layOut(stuff, loader);
    SemaphoreSet& semaphores = *stuff.semaphores;
    SemPost(semaphores, loader ? stuff.spareForPeer : stuff.spareForThisSide);
    SemPost(semaphores, stuff.postAfterRead);
    SemPost(semaphores, stuff.waitBeforeWrite);
    semaphores.stop = image.stop;
    stuff.linkDown = false;
    if (image.stopped) stuff.linkDown = true;
    return true;
}

void SharedStuffClose(VORN_Image& image) {
    SharedStuff& stuff = image.stuff;
    if (image.process.watch != platform::kNoDescriptor) {
        if (stuff.linkDown) platform::killProcess(image.process);
        stuff.linkDown = true;
        image.hasProcess = false;
        platform::releaseProcess(image.process);
    }
    if (stuff.base) ShmUnmap(stuff.shm, stuff.base);
    if (stuff.shm.handle) ShmDestroy(stuff.shm);
    if (stuff.semaphores) SemDestroySet(stuff.semaphores);
    clearRecord(stuff);
}

}  // namespace vorn
