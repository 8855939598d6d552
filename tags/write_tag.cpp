// Writing single items.
#include <cstring>

#include "tags/tag_walk.h"

namespace vorn {
namespace {

// Writes the strings of an array, each with its NUL, and their count in front.
void writeStrings(uint8_t* out, const char* const* strings) {
    uint8_t* text = out + sizeof(uint32_t);
    uint32_t count = 0;
    for (; strings[count] != nullptr; ++count) {
        const size_t bytes = std::strlen(strings[count]) + 1;
        std::memcpy(text, strings[count], bytes);
        text += bytes;
    }
    std::memcpy(out, &count, sizeof count);
}

// Writes the value's own bytes; `size` has room for them.
void writeValue(uint8_t* out, uint32_t id, size_t size, const void* data) {
    switch (VORN_TAG_TYPE(id)) {
        case VORN_TYPE_LONG:
            // The word's low half: the machine is little-endian.
            std::memcpy(out, data, sizeof(int32_t));
            break;
        case VORN_TYPE_STRING:
            std::memcpy(out, data, strnlen(static_cast<const char*>(data), size));
            break;
        case VORN_TYPE_DATA: {
            uint32_t count = 0;
            std::memcpy(&count, static_cast<const uint8_t*>(data) - sizeof count, sizeof count);
            std::memcpy(out, data, count < size ? count : size);
            break;
        }
        case VORN_TYPE_STRING_LIST:
            writeStrings(out, static_cast<const char* const*>(data));
            break;
        case VORN_TYPE_DOUBLE: {
            const double* value = nullptr;
            std::memcpy(&value, data, sizeof value);
            std::memcpy(out, value, sizeof *value);
            break;
        }
        default:
            break;
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

void* VORN_L_TagCopy(void* destination, uint32_t id, int32_t size, const void* data) {
    auto* out = static_cast<uint8_t*>(destination);
    if (id == TAG_Taglist) {
        const auto* list = static_cast<const VORN_TagItem*>(data);
        VORN_L_TagCopyList(list, out, 0);
        return out + VORN_L_TagListSize(list, nullptr);
    }
    const auto bytes = static_cast<uint32_t>(size);
    const VORN_TagItem head{id, bytes + kItemHead};
    std::memcpy(out, &head, sizeof head);
    if (bytes > 0) {
        std::memset(out + kItemHead, 0, bytes);
        writeValue(out + kItemHead, id, bytes, data);
    }
    return out + head.length;
}

void* VORN_L_writetag(void* destination, uint32_t id, const void* data, uint32_t size) {
    if (size != 0) {
        std::memcpy(static_cast<uint8_t*>(destination) + kItemHead, data, size);
    }
    return VORN_L_writetagnodata(destination, id, data, size);
}

void* VORN_L_writetagnodata(void* destination, uint32_t id, const void* /*data*/, uint32_t size) {
    const VORN_TagItem head{id, roundUp4(size) + kItemHead};
    std::memcpy(destination, &head, sizeof head);
    return static_cast<uint8_t*>(destination) + head.length;
}
