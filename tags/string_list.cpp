// String lists whose strings are blocks of their own.
#include <vorn/host.h>
#include <vorn/library.h>

#include <cstring>

#include "support/memory.h"

namespace vorn {
namespace {

constexpr size_t kMostFields = 32767;
constexpr size_t kLongestField = 32767;

struct StringListDeleter {
    void operator()(char** list) const { VORN_H_FreeStringList(list); }
};
using OwnedStringList = std::unique_ptr<char*, StringListDeleter>;

OwnedStringList emptyList(size_t count) {
    return OwnedStringList(
        static_cast<char**>(AllocMemory((count + 1) * sizeof(char*), MEMORY_Clear)));
}

char* copyText(const char* text, size_t length) {
    auto* copy = static_cast<char*>(AllocMemory(length + 1, 0));
    if (copy != nullptr) {
        std::memcpy(copy, text, length);
        copy[length] = '\0';
    }
    return copy;
}

size_t countFields(const char* text) {
    size_t fields = 1;
    for (; *text != '\0'; ++text) {
        fields += *text == ',';
    }
    return fields;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

char** VORN_H_CreateStringList(const char* const* strings, int32_t count) {
    if (count < 0) {
        return nullptr;
    }
    OwnedStringList list = emptyList(static_cast<size_t>(count));
    if (list == nullptr) {
        return nullptr;
    }
    for (int32_t i = 0; i < count; ++i) {
        list.get()[i] = AllocString(strings[i]);
        if (list.get()[i] == nullptr) {
            return nullptr;
        }
    }
    return list.release();
}

void VORN_H_FreeStringList(char** list) {
    if (list == nullptr) {
        return;
    }
    for (char** entry = list; *entry != nullptr; ++entry) {
        FreeMemory(*entry);
    }
    FreeMemory(list);
}

char** VORN_L_StringToStringList(const char* text) {
    const size_t fields = countFields(text);
    if (*text == '\0' || fields > kMostFields) {
        return nullptr;
    }
    OwnedStringList list = emptyList(fields);
    if (list == nullptr) {
        return nullptr;
    }
    for (char** entry = list.get(); *text != '\0'; ++entry) {
        const size_t length = std::strcspn(text, ",");
        if (length > kLongestField || (*entry = copyText(text, length)) == nullptr) {
            return nullptr;
        }
        text += length;
        text += *text == ',';
    }
    return list.release();
}
