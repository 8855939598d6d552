// Which loader reads a file.
#include <vorn/host.h>
#include <vorn/library.h>

#include <cstring>

#include "catalogue/module_directory.h"
#include "catalogue/universal_loader.h"
#include "errors/error_numbers.h"
#include "platform/directory.h"
#include "platform/path.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

struct LoaderChoiceState {
    char defaultLoader[80] = "";
    char wanted[platform::kMaxPath] = "";  // the universal loader's last answer; "": none
};

LoaderChoiceState& choiceState() { return threadState<LoaderChoiceState>(); }

bool isNamed(const char* loaderName) {
    return loaderName != nullptr && *loaderName != '\0' && !namesEqual(loaderName, "Unv");
}

bool isModuleNamed(std::string_view entry, std::string_view name) {
    return namesEqual(entry, name) ||
           (hasEnding(entry, ".exe") && namesEqual(entry.substr(0, entry.size() - 4), name));
}

bool isInstalled(const char* loaderName) {
    platform::DirectoryListing listing;
    int32_t systemError = 0;
    if (!listing.open(moduleDirectory(VORN_LOADER), systemError)) {
        VORN_L_SetErrorCode(nullptr, kErrorOpenFile, systemError);
        return false;
    }
    bool isDirectory = false;
    while (const char* entry = listing.next(isDirectory)) {
        if (!isDirectory && isModuleNamed(entry, loaderName)) {
            return true;
        }
    }
    VORN_L_SetErrorCode(nullptr, kErrorLoaderNotInstalled, 0);
    return false;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

const char* VORN_L_GetLoaderName(const char* fileName) {
    char(&wanted)[platform::kMaxPath] = choiceState().wanted;
    if (!askUniversalLoader(fileName, wanted)) {
        wanted[0] = '\0';
        VORN_L_SetErrorCode(nullptr, kErrorNoLoader, 0);
        return nullptr;
    }
    const bool isFile = platform::fileKind(wanted) != platform::FileKind::Missing;
    return isFile || isInstalled(wanted) ? wanted : nullptr;
}

VORN_Bool VORN_H_ImageGetLoaderName(const char* fileName,
                                    const char* loaderName,
                                    char* buffer,
                                    int32_t size) {
    const size_t room = size < 0 ? 0 : static_cast<size_t>(size);
    int32_t systemError = 0;
    if (!platform::isReadable(fileName, systemError)) {
        VORN_L_SetErrorCode(nullptr, kErrorOpenFile, systemError);
        return 0;
    }
    const char* choice = loaderName;
    if (!isNamed(loaderName)) {
        choice = VORN_L_GetLoaderName(fileName);
    }
    if (choice == nullptr) {
        // So that the host can tell which loader was wanted.
        if (choiceState().wanted[0] != '\0') {
            copyText(buffer, room, choiceState().wanted);
        }
        choice = choiceState().defaultLoader;
    }
    if (*choice == '\0') {
        return 0;
    }
    if (!copyText(buffer, room, choice)) {
        VORN_L_SetErrorCode(nullptr, kErrorBufferTooSmall, 0);
        return 0;
    }
    return 1;
}

void VORN_H_ImageSetDefaultLoader(const char* name) {
    char(&loader)[80] = choiceState().defaultLoader;
    loader[std::string_view(name).copy(loader, sizeof loader - 1)] = '\0';
}
