#include "transport/image.h"

#include <cerrno>
#include <cstdarg>
#include <new>

#include "errors/error_numbers.h"
#include "platform/connection.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"
#include "transport/connection.h"
#include "transport/message.h"
#include "transport/os_layer.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

constexpr uint32_t kKeptTags[] = {ITAG_Input, ITAG_Output, MTAG_ModuleType, MTAG_ModuleName};

// An item's data in the form in which TagAdd takes it.
bool copyKept(VORN_Tracker* tracker, VORN_TagItem*& list, const VORN_TagItem* item) {
    if (!item) return true;
    VORN_TagItem* head = VORN_L_TagAdd(tracker, list, item->id,
                                       static_cast<int32_t>(itemDataSize(item)), itemData(item));
    if (!head) return false;
    list = head;
    return true;
}

void freeHandle(VORN_Image* image) {
    FreeTracker(image->tracker);
    platform::closeDescriptor(image->stop);
    image->~VORN_Image();
    FreeMemory(image);
}

VORN_Image* makeHandle() {
    void* memory = AllocMemory(sizeof(VORN_Image), MEMORY_Clear);
    if (!memory) return nullptr;
    auto* image = new (memory) VORN_Image;
    image->stuff.owner = image;
    image->stuff.shm.reservation = platform::kNoDescriptor;
    image->stuff.linkDown = true;
    image->stop = platform::createSemaphore();
    image->tracker = AllocTracker();
    const bool whole = image->stop != platform::kNoDescriptor && image->tracker;
    if (whole && makeMessageBuffer(*image)) return image;
    freeHandle(image);
    return nullptr;
}

VORN_Word option(const VORN_Word* words, uint32_t id) {
    VORN_Word value = 0;
    VORN_L_FindAPILongTag(words, id, &value, 0);
    return value;
}

// Starts two empty lists and copies the tags that survive a reset.
bool rebuildLists(VORN_Image& image,
                  const VORN_TagItem* oldImageTags,
                  const VORN_TagItem* oldSideTags) {
    image.imageTags = image.sideTags = nullptr;
    image.tracker = AllocTracker();
    if (!image.tracker) return false;
    for (const uint32_t id : kKeptTags) {
        if (!copyKept(image.tracker, image.sideTags, VORN_L_TagFind(oldSideTags, id))) return false;
        if (!copyKept(image.tracker, image.imageTags, VORN_L_TagFind(oldImageTags, id)))
            return false;
    }
    return true;
}

// Nothing is read any more. A module that says more than it was asked for must not wait for a
// reader instead of taking the last command.
void letModuleFinish(SharedStuff& stuff) {
    constexpr int kMostMessages = 16;
    for (int i = 0; i < kMostMessages && !stuff.linkDown; ++i)
        SemPost(*stuff.semaphores, stuff.postAfterRead);
}

// That the module can't be told to end properly, say because it has ended, is no error of the
// handle, which the next image would meet.
void dismissModule(VORN_Image* image) {
    const CodePair error = image->errors.error;
    VORN_L_WaitForAck(image);
    letModuleFinish(image->stuff);
    if (VORN_L_SendCMDTerminate(image)) VORN_L_WaitForTerminate(image);
    VORN_L_SetErrorCode(image, error.code, error.subcode);
}

}  // namespace

ErrorRecord& errorRecordOf(VORN_Image& image) { return image.errors; }

}  // namespace vorn

extern "C" {

VORN_Image* VORN_L_ImageCreateHandle(const VORN_Word* tags) {
    errno = 0;
    VORN_Image* image = vorn::makeHandle();
    if (!image) {
        VORN_L_SetErrorCode(nullptr, vorn::kErrorMemory, errno);
        return nullptr;
    }
    image->option8 = static_cast<uint8_t>(vorn::option(tags, VORN_ID_OPTION_8));
    image->option9 = static_cast<uint8_t>(vorn::option(tags, VORN_ID_OPTION_9));
    if (vorn::ImageAddTags(image, VORN_L_ImageGetModType(image), tags)) return image;
    VORN_L_ImageDestroyHandle(image);
    return nullptr;
}

VORN_Image* VORN_L_ImageVaCreateHandle(VORN_Word unused, ...) {
    va_list arguments;
    va_start(arguments, unused);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    if (words.data()) return VORN_L_ImageCreateHandle(words.data());
    VORN_L_SetErrorCode(nullptr, vorn::kErrorMemory, 0);
    return nullptr;
}

VORN_Image* VORN_L_ImageResetHandle(VORN_Image* image) {
    if (!image) return nullptr;
    image->errors = vorn::ErrorRecord{};
    image->prepared = image->axesSwapped =
        false;  // no size or turn of the last image answers for the next
    VORN_Tracker* oldTracker = image->tracker;
    const bool rebuilt = vorn::rebuildLists(*image, image->imageTags, image->sideTags);
    FreeTracker(oldTracker);
    if (rebuilt) return image;
    VORN_L_SetErrorCode(image, vorn::kErrorMemory, 0);
    return nullptr;
}

void VORN_L_ImageCloseHandle(VORN_Image* image) {
    if (!image) return;
    if (!image->stuff.linkDown) vorn::dismissModule(image);
    vorn::SharedStuffClose(*image);
}

void VORN_L_ImageDestroyHandle(VORN_Image* image) {
    if (image) vorn::freeHandle(image);
}

void VORN_L_ShutDownHandle(VORN_Image* image) {
    // In this order: whoever misses the one because he is setting up the link meets the other.
    image->stopped = true;
    image->stuff.linkDown = true;
    image->hasProcess = false;
    vorn::platform::postSemaphore(image->stop);
}

VORN_TagItem* VORN_L_ImageGetTagList(VORN_Image* image) { return image->imageTags; }

VORN_Tracker* VORN_L_ImageGetTagTrack(VORN_Image* image) { return image->tracker; }

int32_t VORN_L_ImageGetModType(VORN_Image* image) {
    int32_t type = 0;
    vorn::findLong(image->imageTags, MTAG_ModuleType, type);
    return type == 0 ? int32_t{VORN_LOADER} : type;
}

}  // extern "C"
