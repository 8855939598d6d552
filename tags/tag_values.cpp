// Reading values out of items.
#include <cstring>

#include "support/memory.h"
#include "tags/tag_walk.h"

namespace vorn {
namespace {

// Bytes that the first `count` strings of an item take, each ended by a NUL inside the item. False
// when the item doesn't hold that many.
bool stringsHold(const char* text, size_t size, uint32_t count, size_t& bytes) {
    bytes = 0;
    for (; count > 0; --count) {
        const size_t length = strnlen(text + bytes, size - bytes);
        if (length == size - bytes) {
            return false;
        }
        bytes += length + 1;
    }
    return true;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

int32_t VORN_L_TagGetLongVal(const VORN_TagItem* item) {
    int32_t value = 0;
    if (item->length == kLongItemSize) {
        std::memcpy(&value, itemData(item), sizeof value);
    }
    return value;
}

double VORN_L_TagGetDoubleVal(const VORN_TagItem* item) {
    double value = 0.0;
    if (item->length == kDoubleItemSize) {
        std::memcpy(&value, itemData(item), sizeof value);
    }
    return value;
}

void* VORN_L_TagGetData(const VORN_TagItem* item) {
    const uint32_t size = itemDataSize(item);
    void* copy = AllocMemory(size, 0);
    if (copy != nullptr && size > 0) {
        std::memcpy(copy, itemData(item), size);
    }
    return copy;
}

char* VORN_L_TagGetString(const VORN_TagItem* item) {
    const uint32_t size = itemDataSize(item);
    if (size == 0) {
        return AllocString("");
    }
    auto* text = static_cast<char*>(VORN_L_TagGetData(item));
    if (text != nullptr) {
        text[size - 1] = '\0';
    }
    return text;
}

char** VORN_L_TagGetStringList(const VORN_TagItem* item) {
    uint32_t count = 0;
    if (itemDataSize(item) < sizeof count) {
        return nullptr;
    }
    std::memcpy(&count, itemData(item), sizeof count);
    const char* text = reinterpret_cast<const char*>(itemData(item)) + sizeof count;
    size_t bytes = 0;
    if (!stringsHold(text, itemDataSize(item) - sizeof count, count, bytes)) {
        return nullptr;
    }
    const size_t pointers = (size_t{count} + 1) * sizeof(char*);
    auto** list = static_cast<char**>(AllocMemory(pointers + bytes, 0));
    if (list == nullptr) {
        return nullptr;
    }
    char* copy = reinterpret_cast<char*>(list) + pointers;
    std::memcpy(copy, text, bytes);
    for (uint32_t i = 0; i < count; ++i) {
        list[i] = copy;
        copy += std::strlen(copy) + 1;
    }
    list[count] = nullptr;
    return list;
}

void VORN_L_TagFreeData(void* data) { FreeMemory(data); }

void VORN_L_TagFreeString(char* text) { FreeMemory(text); }

char* VORN_L_CopyTagStringOrNull(const VORN_TagItem* list,
                                 uint32_t id,
                                 char* buffer,
                                 int32_t size) {
    if (size < 1) {
        return nullptr;
    }
    buffer[0] = '\0';
    const VORN_TagItem* item = VORN_L_TagFind(list, id);
    if (item == nullptr) {
        return nullptr;
    }
    const auto last = static_cast<size_t>(size) - 1;
    const auto* text = reinterpret_cast<const char*>(itemData(item));
    const size_t inItem = itemDataSize(item);
    const size_t length = strnlen(text, inItem < last ? inItem : last);
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
    buffer[last] = '\0';
    return buffer;
}
