// Taking turns: the only way either side touches the two transfer areas.
#include "errors/error_numbers.h"
#include "transport/image.h"
#include "transport/os_layer.h"

namespace {

void* fail(const SharedStuff& stuff, int32_t code) {
    VORN_L_SetErrorCode(stuff.owner, code, 0);
    return nullptr;
}

}  // namespace

extern "C" {

void* VORN_L_StartReadingSharedStuff(SharedStuff* stuff) {
    if (stuff->readHeld) return stuff->readPointer;
    if (stuff->linkDown) return fail(*stuff, vorn::kErrorLink);
    if (!vorn::SemWait(*stuff->semaphores, stuff->waitBeforeRead))
        return fail(*stuff, vorn::kErrorLink);
    stuff->readHeld = true;
    if (stuff->linkDown) return fail(*stuff, vorn::kErrorLink);
    return stuff->readPointer;
}

void VORN_L_EndReadingSharedStuff(SharedStuff* stuff) {
    if (!stuff->readHeld) return;
    stuff->readHeld = false;
    if (!stuff->linkDown) vorn::SemPost(*stuff->semaphores, stuff->postAfterRead);
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
    if (stuff->linkDown) return fail(*stuff, vorn::kErrorLink);
    if (!vorn::SemWait(*stuff->semaphores, stuff->waitBeforeWrite))
        return fail(*stuff, vorn::kErrorLink);
    if (stuff->linkDown) return fail(*stuff, vorn::kErrorLink);
    return stuff->writePointer;
}

void VORN_L_EndWritingSharedStuff(SharedStuff* stuff) {
    if (stuff->semaphores) vorn::SemPost(*stuff->semaphores, stuff->postAfterWrite);
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
