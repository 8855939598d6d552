// Settings dialogs, which modules have in dynamic libraries of their own.
#include <vorn/host.h>
#include <vorn/library.h>
#include <vorn/module.h>

#include <cstdarg>

#include "catalogue/module_directory.h"
#include "errors/error_numbers.h"
#include "platform/dynamic_library.h"
#include "platform/path.h"
#include "platform/system_text.h"
#include "tags/gathered_words.h"

namespace vorn {
namespace {

bool isCompleted(VORN_ErrorPair answer) {
    const int32_t code = VORN_ErrorPairCode(answer);
    VORN_L_SetErrorCode(nullptr, code, VORN_ErrorPairSubcode(answer));
    return code == 0;
}

// Shows the dialog of a library that is loaded for this one call. False when the library has none.
bool showDialog(const char* path, VORN_Word parentWindow, const VORN_Word* tags, bool& completed) {
    const platform::DynamicLibrary library(path);
    if (void* current = library.symbol("NewDoInterface")) {
        completed = isCompleted(reinterpret_cast<VORN_NewDoInterface>(current)(parentWindow, tags));
        return true;
    }
    if (void* older = library.symbol("DoInterface")) {
        reinterpret_cast<VORN_DoInterface>(older)(parentWindow, 0);
        completed = true;
        return true;
    }
    return false;
}

void reportMissing(VORN_Word parentWindow, bool quiet) {
    VORN_L_SetErrorCode(nullptr, kErrorNoDialog, 0);
    if (!quiet) {
        platform::messageBox(parentWindow, "No Parameters for this saver.", "Parameters");
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_Bool VORN_H_ImageModuleActivateGUI(const char* moduleName,
                                        int32_t type,
                                        const VORN_Word* tags) {
    VORN_Word parentWindow = 0;
    VORN_Word quiet = 0;
    VORN_L_FindAPILongTag(tags, MTAG_ParentWindow, &parentWindow, 0);
    VORN_L_FindAPILongTag(tags, MTAG_Quiet, &quiet, 0);
    char path[platform::kMaxPath];
    bool completed = false;
    if (!findModuleLibrary(moduleName, type, path) ||
        !showDialog(path, parentWindow, tags, completed)) {
        reportMissing(parentWindow, static_cast<int32_t>(quiet) != 0);
    }
    return completed;
}

VORN_Bool VORN_H_ImageVaModuleActivateGUI(const char* moduleName, int32_t type, ...) {
    va_list arguments;
    va_start(arguments, type);
    const GatheredWords words(arguments);
    va_end(arguments);
    if (words.data() == nullptr) {
        VORN_L_SetErrorCode(nullptr, kErrorMemory, 0);
        return 0;
    }
    return VORN_H_ImageModuleActivateGUI(moduleName, type, words.data());
}
