#include "catalogue/module_list.h"

#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "catalogue/module_directory.h"
#include "errors/error_numbers.h"
#include "platform/directory.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

struct CountState {
    int32_t loaders = 0;
    int32_t savers = 0;
};

int32_t& cachedCount(int32_t type) {
    CountState& state = threadState<CountState>();
    return type == VORN_LOADER ? state.loaders : state.savers;
}

bool isModule(const char* name, bool isDirectory) {
    return !isDirectory && (hasEnding(name, ".exe") || std::strchr(name, '.') == nullptr);
}

// The next entry that is a module, or null.
const char* nextModule(platform::DirectoryListing& listing) {
    bool isDirectory = false;
    const char* name = listing.next(isDirectory);
    while (name != nullptr && !isModule(name, isDirectory)) {
        name = listing.next(isDirectory);
    }
    return name;
}

bool openDirectory(int32_t type, platform::DirectoryListing& listing) {
    int32_t error = 0;
    if (listing.open(moduleDirectory(type), error)) {
        return true;
    }
    VORN_L_SetErrorCode(nullptr, kErrorListDirectory, error);
    return false;
}

int32_t countEntries(int32_t type) {
    platform::DirectoryListing listing;
    if (!openDirectory(type, listing)) {
        return 0;
    }
    int32_t count = 0;
    while (nextModule(listing) != nullptr) {
        ++count;
    }
    if (count == 0) {
        VORN_L_SetErrorCode(nullptr, kErrorNoModules, 0);
    }
    return count;
}

struct ListDeleter {
    void operator()(char** list) const { VORN_H_FreeStringList(list); }
};
using OwnedList = std::unique_ptr<char*, ListDeleter>;

OwnedList outOfMemory() {
    VORN_L_SetErrorCode(nullptr, kErrorMemory, 0);
    return nullptr;
}

// Up to `most` names without their endings, in the order of the directory.
OwnedList readNames(platform::DirectoryListing& listing, int32_t most, int32_t& count) {
    const size_t slots = static_cast<size_t>(most) + 1;
    OwnedList list(static_cast<char**>(AllocMemory(slots * sizeof(char*), MEMORY_Clear)));
    if (list == nullptr) {
        return outOfMemory();
    }
    for (count = 0; count < most; ++count) {
        const char* entry = nextModule(listing);
        if (entry == nullptr) {
            break;
        }
        char* name = AllocString(entry);
        if (name == nullptr) {
            return outOfMemory();
        }
        list.get()[count] = name;
        if (char* ending = std::strrchr(name, '.')) {
            *ending = '\0';
        }
    }
    return list;
}

}  // namespace

int32_t countModules(int32_t type) {
    int32_t& count = cachedCount(type);
    if (count == 0) {
        count = countEntries(type);
    }
    return count;
}

char** listModules(int32_t type) {
    const int32_t most = countEntries(type);
    platform::DirectoryListing listing;
    if (most == 0 || !openDirectory(type, listing)) {
        return nullptr;
    }
    int32_t count = 0;
    OwnedList list = readNames(listing, most, count);
    if (list == nullptr) {
        return nullptr;
    }
    std::sort(list.get(), list.get() + count,
              [](const char* a, const char* b) { return compareNames(a, b) < 0; });
    cachedCount(type) = count;
    return list.release();
}

}  // namespace vorn
