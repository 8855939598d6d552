#include "catalogue/module_directory.h"

#include "config/home_directory.h"
#include "platform/path.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

using platform::kMaxPath;

struct DirectoryState {
    char loaders[kMaxPath] = "";
    char savers[kMaxPath] = "";
};

// A directory that is missing keeps the name that was looked for.
void setUp(char (&out)[kMaxPath], const char* name) {
    char path[kMaxPath];
    if (joinPath(path, sizeof path, GetHomeDirectory(), name) &&
        !platform::resolveName(path, out, sizeof out)) {
        copyText(out, sizeof out, path);
    }
}

}  // namespace

const char* moduleDirectory(int32_t type) {
    DirectoryState& state = threadState<DirectoryState>();
    if (*state.loaders == '\0') {
        setUp(state.loaders, "Loaders");
        setUp(state.savers, "Savers");
    }
    switch (type) {
        case VORN_LOADER:
            return state.loaders;
        case VORN_SAVER:
            return state.savers;
        default:
            return nullptr;
    }
}

bool findModuleLibrary(const char* name, int32_t type, char (&path)[kMaxPath]) {
    const char* directory = moduleDirectory(type);
    char asked[kMaxPath];
    return name != nullptr && directory != nullptr &&
           joinPath(asked, sizeof asked, directory, name) &&
           appendText(asked, sizeof asked, ".dll") &&
           platform::resolveLibrary(asked, path, sizeof path);
}

}  // namespace vorn
