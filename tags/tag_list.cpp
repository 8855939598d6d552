// Operations on whole tag lists.
#include <cstdarg>
#include <cstring>

#include "tags/tag_walk.h"

namespace vorn {
namespace {

bool isIn(const uint32_t* ids, uint32_t id) {
    if (ids == nullptr) {
        return false;
    }
    for (; *ids != 0; ++ids) {
        if (*ids == id) {
            return true;
        }
    }
    return false;
}

// The id that a turned image's tag has.
uint32_t turnedId(uint32_t id) {
    static constexpr uint32_t kPairs[][2] = {
        {ITAG_Width, ITAG_Height},
        {ITAG_XAspect, ITAG_YAspect},
        {ITAG_XDPI, ITAG_YDPI},
        {VORN_ID_SWAP_X, VORN_ID_SWAP_Y},
    };
    for (const auto& pair : kPairs) {
        if (id == pair[0]) {
            return pair[1];
        }
        if (id == pair[1]) {
            return pair[0];
        }
    }
    return id;
}

uint8_t* endList(uint8_t* destination, uint32_t lengthWord) {
    const VORN_TagItem end{TAG_End, lengthWord};
    std::memcpy(destination, &end, sizeof end);
    return destination + sizeof end;
}

void writeGoto(uint8_t* destination, const VORN_TagItem* continuation) {
    const VORN_TagItem head{TAG_Goto, kGotoItemSize};
    std::memcpy(destination, &head, sizeof head);
    std::memcpy(destination + sizeof head, &continuation, sizeof continuation);
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_TagItem* VORN_L_TagFind(const VORN_TagItem* list, uint32_t id) {
    if (list == nullptr) {
        return nullptr;
    }
    const VORN_TagItem* item = firstItem(list);
    while (item->id != TAG_End && item->id != id) {
        item = nextItem(item);
    }
    // The list is the caller's, who may change what is in it.
    return item->id == id ? const_cast<VORN_TagItem*>(item) : nullptr;
}

uint32_t VORN_L_TagListSize(const VORN_TagItem* list, const uint32_t* leaveOut) {
    uint32_t size = 0;
    if (list == nullptr) {
        return size;
    }
    for (const auto* item = firstItem(list); item->id != TAG_End; item = nextItem(item)) {
        if (item->id != TAG_SkipTag && !isIn(leaveOut, item->id)) {
            size += item->length;
        }
    }
    return size;
}

void VORN_L_TagCopyList(const VORN_TagItem* list, void* destination, VORN_Bool swap) {
    if (list == nullptr) {
        return;
    }
    auto* out = static_cast<uint8_t*>(destination);
    for (const auto* item = firstItem(list); item->id != TAG_End; item = nextItem(item)) {
        if (item->id == TAG_SkipTag) {
            continue;
        }
        std::memcpy(out, item, item->length);
        if (swap != 0) {
            const uint32_t id = turnedId(item->id);
            std::memcpy(out, &id, sizeof id);
        }
        out += item->length;
    }
}

VORN_TagItem* VORN_L_TagAdd(VORN_Tracker* tracker,
                            VORN_TagItem* continuation,
                            uint32_t id,
                            int32_t size,
                            const void* data) {
    const size_t bytes = id == TAG_Taglist
                             ? VORN_L_TagListSize(static_cast<const VORN_TagItem*>(data), nullptr)
                             : kItemHead + static_cast<size_t>(size);
    const size_t tail = continuation != nullptr ? kGotoItemSize : kEndItemSize;
    void* block = AllocMemoryTracked(tracker, bytes + tail, 0);
    if (block == nullptr) {
        return nullptr;
    }
    auto* behind = static_cast<uint8_t*>(VORN_L_TagCopy(block, id, size, data));
    if (continuation != nullptr) {
        writeGoto(behind, continuation);
    } else {
        endList(behind, kEndItemSize);
    }
    return static_cast<VORN_TagItem*>(block);
}

VORN_TagItem* VORN_L_TagListDup(VORN_Tracker* tracker, const VORN_TagItem* list) {
    const size_t size = VORN_L_TagListSize(list, nullptr);
    auto* copy = static_cast<uint8_t*>(AllocMemoryTracked(tracker, size + kEndItemSize, 0));
    if (copy == nullptr) {
        return nullptr;
    }
    VORN_L_TagCopyList(list, copy, 0);
    endList(copy + size, 0);
    return reinterpret_cast<VORN_TagItem*>(copy);
}

int32_t VORN_L_TagVaDestroy(VORN_TagItem* list, ...) {
    int32_t hidden = 0;
    va_list arguments;
    va_start(arguments, list);
    for (uint32_t id = va_arg(arguments, unsigned); id != 0; id = va_arg(arguments, unsigned)) {
        if (VORN_TagItem* item = VORN_L_TagFind(list, id)) {
            item->id = TAG_SkipTag;
            ++hidden;
        }
    }
    va_end(arguments);
    return hidden;
}
