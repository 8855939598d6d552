// User tag lists: sizes, conversion to the stored form, searching.
#include <cstring>
#include <limits>

#include "tags/tag_walk.h"

namespace vorn {
namespace {

// Data bytes of an item, or -1 when no item can be that large.
int32_t storedSize(size_t bytes) {
    constexpr size_t kMost = std::numeric_limits<int32_t>::max() - kItemHead - 3;
    return bytes > kMost ? -1 : static_cast<int32_t>(roundUp4(static_cast<uint32_t>(bytes)));
}

size_t stringListBytes(const char* const* strings) {
    size_t bytes = sizeof(uint32_t);
    for (; *strings != nullptr; ++strings) {
        bytes += std::strlen(*strings) + 1;
    }
    return bytes;
}

int32_t blockSize(const void* block, const void** data) {
    uint32_t count = 0;
    std::memcpy(&count, block, sizeof count);
    *data = static_cast<const uint8_t*>(block) + sizeof count;
    return storedSize(count);
}

VORN_Bool findWord(const VORN_Word* words, uint32_t id, VORN_Word* out, VORN_Word defaultValue) {
    bool found = false;
    while (!found) {
        const auto current = static_cast<uint32_t>(*words++);
        if (current == TAG_End) {
            break;
        }
        if (current == TAG_VaList) {
            words = *reinterpret_cast<const VORN_Word* const*>(*words);
            continue;
        }
        found = current == id;
        if (!found) {
            ++words;
        }
    }
    if (out != nullptr) {
        *out = found ? *words : defaultValue;
    }
    return found;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

int32_t VORN_L_DetermineUserTagSize(uint32_t id, const VORN_Word* value, const void** data) {
    *data = nullptr;
    const auto* pointer = reinterpret_cast<const void*>(*value);
    switch (VORN_TAG_TYPE(id)) {
        case VORN_TYPE_LONG:
            *data = value;
            return sizeof(int32_t);
        case VORN_TYPE_DOUBLE:
            *data = value;
            return sizeof(double);
        case VORN_TYPE_STRING:
            *data = pointer;
            return pointer == nullptr
                       ? -1
                       : storedSize(std::strlen(static_cast<const char*>(pointer)) + 1);
        case VORN_TYPE_DATA:
            return pointer == nullptr ? -1 : blockSize(pointer, data);
        case VORN_TYPE_STRING_LIST:
            *data = pointer;
            return pointer == nullptr
                       ? -1
                       : storedSize(stringListBytes(static_cast<const char* const*>(pointer)));
        case VORN_TYPE_FUNCPTR:
            return -1;
        default:
            if (id == TAG_Taglist) {
                *data = pointer;
            }
            return 0;
    }
}

uint32_t VORN_L_UserTagListSize(uint32_t first, const VORN_Word* rest) {
    uint32_t total = kEndItemSize;
    for (uint32_t id = first; id != TAG_End; id = static_cast<uint32_t>(*rest++)) {
        const VORN_Word value = *rest++;
        const void* data = nullptr;
        const int32_t size = VORN_L_DetermineUserTagSize(id, &value, &data);
        if (id == TAG_Taglist) {
            total += VORN_L_TagListSize(static_cast<const VORN_TagItem*>(data), nullptr);
        } else if (size >= 0) {
            total += kItemHead + static_cast<uint32_t>(size);
        }
    }
    return total;
}

uint32_t VORN_L_CopyUserTags(uint32_t first,
                             const VORN_Word* rest,
                             void* destination,
                             uint32_t /*size*/) {
    void* out = destination;
    for (uint32_t id = first; id != TAG_End; id = static_cast<uint32_t>(*rest++)) {
        const VORN_Word value = *rest++;
        const void* data = nullptr;
        const int32_t size = VORN_L_DetermineUserTagSize(id, &value, &data);
        if (size >= 0) {
            out = VORN_L_TagCopy(out, id, size, data);
        }
    }
    out = VORN_L_writetag(out, TAG_End, nullptr, 0);
    return static_cast<uint32_t>(static_cast<uint8_t*>(out) - static_cast<uint8_t*>(destination));
}

VORN_Bool VORN_L_FindAPILongTag(const VORN_Word* words,
                                uint32_t id,
                                VORN_Word* out,
                                VORN_Word defaultValue) {
    return findWord(words, id, out, defaultValue);
}

VORN_Bool VORN_L_FindAPIStringTag(const VORN_Word* words,
                                  uint32_t id,
                                  VORN_Word* out,
                                  VORN_Word defaultValue) {
    return findWord(words, id, out, defaultValue);
}
