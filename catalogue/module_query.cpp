// What is installed, and what a module can do.
#include <vorn/host.h>
#include <vorn/library.h>

#include <cstdarg>

#include "catalogue/capability.h"
#include "catalogue/module_directory.h"
#include "catalogue/module_list.h"
#include "errors/error_numbers.h"
#include "tags/gathered_words.h"

namespace vorn {
namespace {

void answerLong(VORN_Word address, int32_t value) { *reinterpret_cast<int32_t*>(address) = value; }

void answerText(VORN_Word address, const char* text) {
    *reinterpret_cast<const char**>(address) = text;
}

void answerList(VORN_Word address, char** list) { *reinterpret_cast<char***>(address) = list; }

bool isDynamicLibrary(const char* name, int32_t type) {
    char path[platform::kMaxPath];
    return findModuleLibrary(name, type, path);
}

bool answerHandlerQuestion(int32_t type, uint32_t id, VORN_Word address) {
    switch (id) {
        case MTAG_NumModules:
            answerLong(address, countModules(type));
            return true;
        case MTAG_ModuleDirectory:
            answerText(address, moduleDirectory(type));
            return true;
        case MTAG_ModuleList: {
            char** list = listModules(type);
            answerList(address, list);
            return list != nullptr;
        }
        default:
            return true;
    }
}

// What stands in the capability record.
void answerCapability(uint32_t id, VORN_Word address) {
    switch (id) {
        case MTAG_Alpha:
            return answerLong(address, VORN_L_AlphaAllowed());
        case MTAG_AlphaAlways:
            return answerLong(address, VORN_L_AlphaAlways());
        case MTAG_Device:
            return answerLong(address, VORN_L_Device());
        case MTAG_Animation:
            return answerLong(address, VORN_L_Animation());
        case MTAG_Extension:
            return answerText(address, VORN_L_GetDefaultExtension());
        case MTAG_LongModuleName:
            return answerText(address, VORN_L_GetLongModuleName());
        case MTAG_ColorSpaces:
            return answerList(address, VORN_L_StringToStringList(VORN_L_GetColorSpaces()));
        case MTAG_Sizes:
            return answerList(address, VORN_L_StringToStringList(VORN_L_GetSizes()));
        case MTAG_BitsPerChannel:
            return answerList(address, VORN_L_StringToStringList(VORN_L_GetSaverDepths()));
        default:
            return;
    }
}

VORN_Bool outOfMemory() {
    VORN_L_SetErrorCode(nullptr, kErrorMemory, 0);
    return 0;
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_Bool VORN_H_ImageQueryModuleHandler(int32_t type, const VORN_Word* tags) {
    if (moduleDirectory(type) == nullptr) {
        return 0;
    }
    for (; static_cast<uint32_t>(tags[0]) != TAG_End; tags += 2) {
        if (!answerHandlerQuestion(type, static_cast<uint32_t>(tags[0]), tags[1])) {
            return 0;
        }
    }
    return 1;
}

VORN_Bool VORN_H_ImageVaQueryModuleHandler(int32_t type, ...) {
    va_list arguments;
    va_start(arguments, type);
    const GatheredWords words(arguments);
    va_end(arguments);
    return words.data() != nullptr ? VORN_H_ImageQueryModuleHandler(type, words.data())
                                   : outOfMemory();
}

VORN_Bool VORN_H_ImageQueryModule(const char* name, int32_t type, const VORN_Word* tags) {
    const VORN_Bool hasCapFile = VORN_L_GetParseCap(name, type);
    for (; static_cast<uint32_t>(tags[0]) != TAG_End; tags += 2) {
        switch (static_cast<uint32_t>(tags[0])) {
            case MTAG_HasCapFile:
                answerLong(tags[1], hasCapFile);
                break;
            case MTAG_CapString:
                answerText(tags[1], VORN_L_GetCapString(name, type));
                break;
            case MTAG_ModuleIsDLL:
                answerLong(tags[1], isDynamicLibrary(name, type));
                break;
            default:
                answerCapability(static_cast<uint32_t>(tags[0]), tags[1]);
                break;
        }
    }
    return 1;
}

VORN_Bool VORN_H_ImageVaQueryModule(const char* name, int32_t type, ...) {
    va_list arguments;
    va_start(arguments, type);
    const GatheredWords words(arguments);
    va_end(arguments);
    return words.data() != nullptr ? VORN_H_ImageQueryModule(name, type, words.data())
                                   : outOfMemory();
}
