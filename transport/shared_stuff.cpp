// Taking turns: the only way either side touches the two transfer areas.
#include "errors/error_numbers.h"
#include "transport/image.h"
#include "transport/module_process.h"
#include "transport/os_layer.h"

namespace {

void* fail(const SharedStuff& stuff, int32_t code) {
    VORN_L_SetErrorCode(stuff.owner, code, 0);
    return nullptr;
}

void* failDown(const SharedStuff& stuff) {
    return fail(stuff, stuff.downCode ? stuff.downCode : vorn::kErrorLink);
}

// A wait that fails once fails for good.
void* failWait(SharedStuff& stuff) {
    stuff.linkDown = true;
    if (stuff.owner) stuff.downCode = vorn::reasonOfEnd(*stuff.owner);
    return failDown(stuff);
}

// Hands an area to the peer, who has waited for it to get it before: so the count is 0 now. A
// module that posts what is the host's to post, or writes without waiting, could keep the host
// reading the same bytes for ever, even beyond its own end.
void handOver(SharedStuff& stuff, uint32_t entry) {
    const bool inTurn = vorn::SemPost(*stuff.semaphores, entry);
    if (inTurn || !stuff.owner || stuff.linkDown) return;
    stuff.linkDown = true;
    stuff.downCode = vorn::kErrorProtocol;
    failDown(stuff);
}

}  // namespace

extern "C" {

void* VORN_L_StartReadingSharedStuff(SharedStuff* stuff) {
    if (stuff->readHeld) return stuff->readPointer;
    if (stuff->linkDown) return failDown(*stuff);
    if (!vorn::SemWait(*stuff->semaphores, stuff->waitBeforeRead)) return failWait(*stuff);
    stuff->readHeld = true;
    if (stuff->linkDown) return failDown(*stuff);
    return stuff->readPointer;
}

void VORN_L_EndReadingSharedStuff(SharedStuff* stuff) {
    if (!stuff->readHeld) return;
    stuff->readHeld = false;
    if (!stuff->linkDown) handOver(*stuff, stuff->postAfterRead);
}

void* VORN_L_AttemptStartReadingSharedStuff(SharedStuff* stuff) {
    if (stuff->readHeld) return stuff->readPointer;
    if (stuff->linkDown) return nullptr;
    if (!vorn::SemTryWait(*stuff->semaphores, stuff->waitBeforeRead)) return nullptr;
    if (stuff->linkDown) return nullptr;
    stuff->readHeld = true;
    return stuff->readPointer;
}

void* VORN_L_StartWritingSharedStuff(SharedStuff* stuff, uint32_t size) {
    // Without a connection there is no area that the message could be too large for.
    const bool tooLarge = size > static_cast<uint32_t>(stuff->writeSize);
    if (tooLarge && stuff->base) return fail(*stuff, vorn::kErrorTooLarge);
    if (stuff->linkDown) return failDown(*stuff);
    if (!vorn::SemWait(*stuff->semaphores, stuff->waitBeforeWrite)) return failWait(*stuff);
    if (stuff->linkDown) return failDown(*stuff);
    return stuff->writePointer;
}

void VORN_L_EndWritingSharedStuff(SharedStuff* stuff) {
    if (stuff->semaphores) handOver(*stuff, stuff->postAfterWrite);
}

void* VORN_L_ImageHandleStartReading(VORN_Image* image) {
    return VORN_L_StartReadingSharedStuff(&image->stuff);
}

void VORN_L_ImageHandleEndReading(VORN_Image* image) {
    VORN_L_EndReadingSharedStuff(&image->stuff);
}

void* VORN_L_ImageHandleStartWriting(VORN_Image* image, uint32_t size) {
    return VORN_L_StartWritingSharedStuff(&image->stuff, size);
}

void VORN_L_ImageHandleEndWriting(VORN_Image* image) {
    VORN_L_EndWritingSharedStuff(&image->stuff);
}

}  // extern "C"
