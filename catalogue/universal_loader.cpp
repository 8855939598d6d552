#include "catalogue/universal_loader.h"

#include <cstring>

#include "config/home_directory.h"
#include "platform/dynamic_library.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

using platform::kMaxPath;

constexpr char kLibraryName[] = "libvornunv.so";
constexpr char kFunctionName[] = "VORN_M_UniversalLoader";

struct UniversalLoaderState {
    platform::DynamicLibrary library;  // keeps the function in memory
    UniversalLoaderFunction function = nullptr;
    UniversalLoaderFunction replacement = nullptr;
};

bool loadFrom(const char* directory, UniversalLoaderState& state) {
    char path[kMaxPath];
    if (!joinPath(path, sizeof path, directory, kLibraryName)) {
        return false;
    }
    platform::DynamicLibrary library(path);
    void* function = library.symbol(kFunctionName);
    if (function == nullptr) {
        return false;
    }
    state.library = std::move(library);
    state.function = reinterpret_cast<UniversalLoaderFunction>(function);
    return true;
}

// The directory that the home directory lies in.
bool homeParent(char (&out)[kMaxPath]) {
    if (!copyText(out, sizeof out, GetHomeDirectory())) {
        return false;
    }
    char* separator = std::strrchr(out, platform::kSeparator);
    if (separator == nullptr) {
        return false;
    }
    *separator = '\0';
    return true;
}

// Beside this library, or else where the home directory lies: beside it or in the lib there.
void load(UniversalLoaderState& state) {
    char directory[kMaxPath];
    if (platform::libraryDirectory(directory, sizeof directory) && loadFrom(directory, state)) {
        return;
    }
    char parent[kMaxPath];
    if (!homeParent(parent) || loadFrom(parent, state)) {
        return;
    }
    if (joinPath(directory, sizeof directory, parent, "lib")) {
        loadFrom(directory, state);
    }
}

UniversalLoaderFunction universalLoader() {
    UniversalLoaderState& state = threadState<UniversalLoaderState>();
    if (state.replacement != nullptr) {
        return state.replacement;
    }
    if (state.function == nullptr) {
        load(state);
    }
    return state.function;
}

}  // namespace

bool askUniversalLoader(const char* fileName, char (&answer)[kMaxPath]) {
    answer[0] = '\0';
    const UniversalLoaderFunction ask = universalLoader();
    if (ask == nullptr || ask(fileName, answer, 0) == 0) {
        return false;
    }
    answer[kMaxPath - 1] = '\0';
    const size_t length = std::strlen(answer);
    if (length > 0 && answer[length - 1] == '\n') {
        answer[length - 1] = '\0';
    }
    return answer[0] != '\0';
}

void replaceUniversalLoader(UniversalLoaderFunction function) {
    threadState<UniversalLoaderState>().replacement = function;
}

}  // namespace vorn
