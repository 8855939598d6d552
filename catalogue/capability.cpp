#include "catalogue/capability.h"

#include <cstring>

#include "catalogue/module_directory.h"
#include "platform/path.h"
#include "support/text.h"
#include "support/text_file.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

using platform::kMaxPath;

CapabilityRecord& record() { return threadState<CapabilityRecord>(); }

// Writes the real path of "directory/name.cap". False when there is no such file.
bool findCapFile(const char* directory, const char* name, char (&path)[kMaxPath]) {
    char asked[kMaxPath];
    return joinPath(asked, sizeof asked, directory, name) &&
           appendText(asked, sizeof asked, ".cap") &&
           platform::resolveName(asked, path, sizeof path);
}

// The module's file name without the ending that a program may have.
bool baseName(const char* name, char (&base)[kMaxPath]) {
    if (!copyText(base, kMaxPath, name)) {
        return false;
    }
    if (hasEnding(base, ".exe")) {
        base[std::strlen(base) - std::strlen(".exe")] = '\0';
    }
    return true;
}

VORN_Word word(const char* text) { return reinterpret_cast<VORN_Word>(text); }

}  // namespace
}  // namespace vorn

using namespace vorn;

char* VORN_L_GetCapString(const char* name, int32_t type) {
    char base[kMaxPath];
    if (moduleDirectory(type) == nullptr || name == nullptr || !baseName(name, base)) {
        return nullptr;
    }
    for (const int32_t holder : {type, VORN_LOADER + VORN_SAVER - type}) {
        char path[kMaxPath];
        if (!findCapFile(moduleDirectory(holder), base, path)) {
            continue;
        }
        size_t length = 0;
        if (Owned<char> text = readTextFile(path, length)) {
            return text.release();
        }
    }
    return nullptr;
}

VORN_Bool VORN_L_GetParseCap(const char* name, int32_t type) {
    CapabilityRecord& cap = record();
    const VORN_ParseEntry table[] = {
        {"Alpha", PARSE_Bool, &cap.alpha, 0},
        {"AlphaAlways", PARSE_Bool, &cap.alphaAlways, 0},
        {"Device", PARSE_Bool, &cap.device, 0},
        {"Animation", PARSE_Bool, &cap.animation, 0},
        {"ColorSpaces", PARSE_String, cap.colorSpaces, word("RGB")},
        {"Sizes", PARSE_String, cap.sizes, word("1x1-65535x65535")},
        {"Extension", PARSE_String, cap.extension, 0},
        {"LongModuleName", PARSE_String, cap.longModuleName, 0},
        {"BitsPerChannel", PARSE_String, cap.bitsPerChannel, word("8")},
        {nullptr, 0, nullptr, 0},
    };
    const Owned<char> text(VORN_L_GetCapString(name, type));
    VORN_u_ParseGUIResults(text.get(), table);
    return text != nullptr;
}

VORN_Bool VORN_L_CapAvailable(const char* directory, const char* name) {
    char path[kMaxPath];
    return findCapFile(directory, name, path);
}

VORN_Bool VORN_L_AlphaAllowed(void) { return record().alpha != 0; }
VORN_Bool VORN_L_AlphaAlways(void) { return record().alphaAlways != 0; }
VORN_Bool VORN_L_Device(void) { return record().device != 0; }
VORN_Bool VORN_L_Animation(void) { return record().animation != 0; }
const char* VORN_L_GetColorSpaces(void) { return record().colorSpaces; }
const char* VORN_L_GetSizes(void) { return record().sizes; }
const char* VORN_L_GetDefaultExtension(void) { return record().extension; }
const char* VORN_L_GetLongModuleName(void) { return record().longModuleName; }
const char* VORN_L_GetSaverDepths(void) { return record().bitsPerChannel; }
