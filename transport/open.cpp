// Opening and closing: the life of a module connection.
#include <vorn/host.h>

#include <cstdarg>
#include <cstring>

#include "errors/error_numbers.h"
#include "platform/connection.h"
#include "platform/path.h"
#include "tags/gathered_words.h"
#include "transport/connection.h"
#include "transport/image.h"
#include "transport/module_process.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

constexpr uint32_t kProtocolVersion = 3;
constexpr int32_t kLibraryVersion = 1;

VORN_Bool failStart(VORN_Image* image, int32_t code) {
    VORN_L_SetErrorCode(image, code, 0);
    return 0;
}

// What a start has made so far is released at once, whatever became of the program.
VORN_Bool abandonStart(VORN_Image* image) {
    image->stuff.linkDown = true;
    SharedStuffClose(*image);
    image->ackOutstanding = false;
    return 0;
}

void forgetEarlierStop(VORN_Image& image) {
    image.stopped = false;
    while (platform::tryWaitSemaphore(image.stop)) {
    }
}

VORN_Bool refuseVersion(VORN_Image* image) {
    const auto version = static_cast<int32_t>(image->moduleVersion);
    dbprint("Version mismatch, mine is %d, modules is %d\n", static_cast<int>(kProtocolVersion),
            version);
    if (VORN_L_SendCMDTerminate(image)) VORN_L_WaitForTerminate(image);
    SharedStuffClose(*image);
    const bool older = version < static_cast<int32_t>(kProtocolVersion);
    return failStart(image, older ? kErrorOlderModule : kErrorNewerModule);
}

bool keepModuleName(VORN_Image* image, const VORN_TagItem* name) {
    image->moduleName.reset(VORN_L_TagGetString(name));
    if (image->moduleName) return true;
    VORN_L_SetErrorCode(image, kErrorMemory, 0);
    return false;
}

}  // namespace
}  // namespace vorn

extern "C" {

int32_t VORN_H_GetVersion(void) { return vorn::kLibraryVersion; }

VORN_Image* VORN_H_ModuleOpen(const char* name, int32_t type, const VORN_Word* tags) {
    if (!name || !*name) {
        VORN_L_SetErrorCode(nullptr, vorn::kErrorNoModuleName, 0);
        return nullptr;
    }
    if (type != VORN_LOADER && type != VORN_SAVER) {
        VORN_L_SetErrorCode(nullptr, vorn::kErrorModuleType, 0);
        return nullptr;
    }
    char path[vorn::platform::kMaxPath];
    if (!VORN_H_ModuleGetName(name, type, path, sizeof path)) return nullptr;
    static constexpr VORN_Word kNone = TAG_End;
    const VORN_Word* cursor = tags ? tags : &kNone;
    return VORN_L_ImageVaCreateHandle(0, TAG_VaList, VORN_Word(&cursor), ITAG_Input,
                                      VORN_Word(type == VORN_LOADER), ITAG_Output,
                                      VORN_Word(type == VORN_SAVER), MTAG_ModuleType,
                                      VORN_Word(type), MTAG_ModuleName, VORN_Word(path), TAG_End);
}

VORN_Image* VORN_H_ModuleVaOpen(const char* name, int32_t type, ...) {
    va_list arguments;
    va_start(arguments, type);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    if (words.data()) return VORN_H_ModuleOpen(name, type, words.data());
    VORN_L_SetErrorCode(nullptr, vorn::kErrorMemory, 0);
    return nullptr;
}

VORN_Bool VORN_H_ImageOpen(VORN_Image* image, const VORN_Word* tags) {
    // Out of memory is recorded, and the open goes on. When it fails, for the want of a tag
    // perhaps, that was the reason.
    const bool added = vorn::ImageAddTags(image, VORN_LOADER, tags);
    const bool opened = VORN_L_StartImageModule(image) && VORN_L_WaitForInfo(image);
    return opened || (!added && vorn::failStart(image, vorn::kErrorMemory));
}

VORN_Bool VORN_H_ImageVaOpen(VORN_Image* image, ...) {
    va_list arguments;
    va_start(arguments, image);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() ? VORN_H_ImageOpen(image, words.data())
                        : vorn::failStart(image, vorn::kErrorMemory);
}

VORN_Bool VORN_L_StartImageModule(VORN_Image* image) {
    if (!image->imageTags) return vorn::failStart(image, vorn::kErrorNoTags);
    const VORN_TagItem* name = VORN_L_TagFind(image->imageTags, MTAG_ModuleName);
    if (!name) return vorn::failStart(image, vorn::kErrorHandleWithoutName);
    if (!vorn::keepModuleName(image, name)) return 0;
    return VORN_L_StartModule(image, image->moduleName.get(), VORN_L_ImageGetModType(image));
}

VORN_Bool VORN_L_StartModule(VORN_Image* image, const char* moduleFileName, int32_t type) {
    vorn::forgetEarlierStop(*image);
    if (!image->stuff.linkDown && !vorn::platform::hasEnded(image->process)) return 1;
    vorn::SharedStuffClose(*image);  // what is left of a connection that was stopped, or has ended
    if (!vorn::SharedStuffCreate(*image, type)) return 0;
    if (!vorn::ModuleLaunch(*image, moduleFileName)) return vorn::abandonStart(image);
    image->expectAck(0);  // the first one, which comes without a command
    image->moduleVersion = 0;
    if (!VORN_L_WaitForAck(image)) {
        const int32_t reason = image->stuff.downCode;
        vorn::failStart(image, reason ? reason : int32_t{vorn::kErrorLink});
        return vorn::abandonStart(image);
    }
    return image->moduleVersion == vorn::kProtocolVersion ? VORN_Bool{1}
                                                          : vorn::refuseVersion(image);
}

VORN_Bool VORN_H_ImageClose(VORN_Image* image) {
    if (!image) return 1;
    VORN_L_SendCMDAbort(image);
    return VORN_L_ImageResetHandle(image) != nullptr;
}

void VORN_H_ModuleClose(VORN_Image* image) {
    VORN_L_ImageCloseHandle(image);
    VORN_L_ImageDestroyHandle(image);
}

}  // extern "C"
