#include "transport/tag_exchange.h"

#include <vorn/host.h>

#include <cstdarg>
#include <cstring>

#include "errors/error_numbers.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"
#include "transport/image.h"

namespace vorn {
namespace {

const VORN_Word* wordsAtCursor(VORN_Word value) {
    return *reinterpret_cast<const VORN_Word* const*>(value);
}

bool memoryError(VORN_Image* image) {
    VORN_L_SetErrorCode(image, kErrorMemory, 0);
    return false;
}

// Takes the entries that no list stores. True when the entry was one.
bool takeOption(VORN_Image& image, uint32_t id, VORN_Word value) {
    if (id == VORN_ID_OPTION_8)
        image.option8 = static_cast<uint8_t>(value);
    else if (id == VORN_ID_OPTION_9)
        image.option9 = static_cast<uint8_t>(value);
    else
        return id == TAG_SkipTag;
    return true;
}

bool store(VORN_Image& image, VORN_TagItem*& list, uint32_t id, const VORN_Word* value) {
    const void* data = nullptr;
    const int32_t size = VORN_L_DetermineUserTagSize(id, value, &data);
    if (size < 0) return true;
    VORN_TagItem* head = VORN_L_TagAdd(image.tracker, list, id, size, data);
    if (!head) return memoryError(&image);
    list = head;
    return true;
}

// The id under which a value is stored while the picture stands on its side for the host.
uint32_t swappedId(uint32_t id) {
    switch (id) {
        case ITAG_Width:
            return ITAG_Height;
        case ITAG_Height:
            return ITAG_Width;
        case ITAG_XAspect:
            return ITAG_YAspect;
        case ITAG_YAspect:
            return ITAG_XAspect;
        case ITAG_XDPI:
            return ITAG_YDPI;
        case ITAG_YDPI:
            return ITAG_XDPI;
        case VORN_ID_SWAP_X:
            return VORN_ID_SWAP_Y;
        case VORN_ID_SWAP_Y:
            return VORN_ID_SWAP_X;
        default:
            return id;
    }
}

template <class Pointer>
bool answerPointer(VORN_Word address, Pointer copy) {
    if (copy) std::memcpy(reinterpret_cast<void*>(address), &copy, sizeof copy);
    return copy != nullptr;
}

// Writes an item's value to the address that the caller gave.
bool answer(const VORN_TagItem* item, VORN_Word address) {
    switch (VORN_TAG_TYPE(item->id)) {
        case VORN_TYPE_STRING:
            return answerPointer(address, VORN_L_TagGetString(item));
        case VORN_TYPE_DATA:
            return answerPointer(address, VORN_L_TagGetData(item));
        case VORN_TYPE_STRING_LIST:
            return answerPointer(address, VORN_L_TagGetStringList(item));
        case VORN_TYPE_LONG: {
            const int32_t value = VORN_L_TagGetLongVal(item);
            std::memcpy(reinterpret_cast<void*>(address), &value, sizeof value);
            return true;
        }
        case VORN_TYPE_DOUBLE: {
            const double value = VORN_L_TagGetDoubleVal(item);
            std::memcpy(reinterpret_cast<void*>(address), &value, sizeof value);
            return true;
        }
        default:
            return true;  // types without data
    }
}

// A saver knows its picture's size from its tags until a transfer has been prepared.
bool answerSize(VORN_Image& image, uint32_t id, VORN_Word address) {
    int32_t value = id == ITAG_Width ? image.outputWidth : image.outputHeight;
    if (!image.prepared && !findLong(image.sideTags, id, value) &&
        !findLong(image.imageTags, id, value))
        return false;
    std::memcpy(reinterpret_cast<void*>(address), &value, sizeof value);
    return true;
}

bool answerHost(VORN_Image& image, uint32_t id, VORN_Word address) {
    if (image.axesSwapped) id = swappedId(id);
    if (id == ITAG_Width || id == ITAG_Height) return answerSize(image, id, address);
    const VORN_TagItem* item = VORN_L_TagFind(image.sideTags, id);
    if (!item) item = VORN_L_TagFind(image.imageTags, id);
    return item && answer(item, address);
}

}  // namespace

bool ImageAddTags(VORN_Image* image, int32_t moduleType, const VORN_Word* words) {
    VORN_TagItem** list = moduleType == VORN_LOADER  ? &image->imageTags
                          : moduleType == VORN_SAVER ? &image->sideTags
                                                     : nullptr;
    for (; static_cast<uint32_t>(words[0]) != TAG_End; words += 2) {
        const auto id = static_cast<uint32_t>(words[0]);
        if (takeOption(*image, id, words[1])) continue;
        if (id == TAG_VaList) {
            if (!ImageAddTags(image, moduleType, wordsAtCursor(words[1]))) return false;
        } else if (list && !store(*image, *list, id, &words[1])) {
            return false;
        }
    }
    return true;
}

bool ImageVaAddTags(VORN_Image* image, ...) {
    va_list arguments;
    va_start(arguments, image);
    const GatheredWords words(arguments);
    va_end(arguments);
    if (!words.data()) return memoryError(image);
    return ImageAddTags(image, VORN_L_ImageGetModType(image), words.data());
}

bool findLong(const VORN_TagItem* list, uint32_t id, int32_t& value) {
    const VORN_TagItem* item = VORN_L_TagFind(list, id);
    if (item) value = VORN_L_TagGetLongVal(item);
    return item != nullptr;
}

}  // namespace vorn

extern "C" {

VORN_Bool VORN_H_ImageSetTags(VORN_Image* image, const VORN_Word* tags) {
    const bool saver = VORN_L_ImageGetModType(image) == VORN_SAVER;
    for (; static_cast<uint32_t>(tags[0]) != TAG_End; tags += 2) {
        const auto id = static_cast<uint32_t>(tags[0]);
        if (vorn::takeOption(*image, id, tags[1])) continue;
        if (id == TAG_VaList)
            VORN_H_ImageSetTags(image, vorn::wordsAtCursor(tags[1]));
        else if (!vorn::store(*image, saver ? image->imageTags : image->sideTags, id, &tags[1]))
            return 0;
    }
    return 1;
}

VORN_Bool VORN_H_ImageVaSetTags(VORN_Image* image, ...) {
    va_list arguments;
    va_start(arguments, image);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() ? VORN_H_ImageSetTags(image, words.data()) : vorn::memoryError(image);
}

VORN_Bool VORN_H_ImageGetTags(VORN_Image* image, const VORN_Word* tags) {
    if (VORN_L_ImageGetModType(image) != VORN_SAVER && !VORN_L_PrepareTransfer(image)) return 0;
    bool all = true;
    for (; static_cast<uint32_t>(tags[0]) != TAG_End; tags += 2) {
        all = vorn::answerHost(*image, static_cast<uint32_t>(tags[0]), tags[1]) && all;
    }
    return all;
}

VORN_Bool VORN_H_ImageVaGetTags(VORN_Image* image, ...) {
    va_list arguments;
    va_start(arguments, image);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() ? VORN_H_ImageGetTags(image, words.data()) : vorn::memoryError(image);
}

VORN_Bool VORN_L_ImageModuleGetTags(VORN_Image* image, const VORN_Word* tags) {
    bool all = true;
    for (; static_cast<uint32_t>(tags[0]) != TAG_End; tags += 2) {
        const VORN_TagItem* item = VORN_L_TagFind(image->imageTags, static_cast<uint32_t>(tags[0]));
        all = item && vorn::answer(item, tags[1]) && all;
    }
    return all;
}

VORN_Bool VORN_L_ImageVaModuleGetTags(VORN_Image* image, ...) {
    va_list arguments;
    va_start(arguments, image);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() ? VORN_L_ImageModuleGetTags(image, words.data()) : vorn::memoryError(image);
}

}  // extern "C"
