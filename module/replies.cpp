// Image information and command answers, composed in the shared area.
#include <vorn/library.h>
#include <vorn/module.h>

#include <cstdarg>
#include <cstring>

#include "module/module_state.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"

namespace vorn {
namespace {

// Completes an announced format before the host sees it.
void completeFormat(VORN_TagItem* list) {
    VORN_TagItem* item = VORN_L_TagFind(list, ITAG_DataFormat);
    VORN_DataFormat format;
    if (!item || itemDataSize(item) < sizeof format) return;
    std::memcpy(&format, item + 1, sizeof format);  // items are aligned to 4
    VORN_L_DataFormatMacroSetup(&format);
    std::memcpy(item + 1, &format, sizeof format);
}

VORN_Bool send(ModuleState& state, uint32_t first, const VORN_Word* rest) {
    const uint32_t size = VORN_L_UserTagListSize(first, rest);
    void* place = VORN_L_StartWritingSharedStuff(&state.stuff, size);
    if (!place) return 0;
    VORN_L_CopyUserTags(first, rest, place, size);
    completeFormat(static_cast<VORN_TagItem*>(place));
    VORN_L_EndWritingSharedStuff(&state.stuff);
    return 1;
}

}  // namespace
}  // namespace vorn

extern "C" {

VORN_Bool VORN_M_SetImageInfoTags(uint32_t first, const VORN_Word* rest) {
    return vorn::send(vorn::moduleState(), first, rest);
}

VORN_Bool VORN_M_SetVaImageInfo(uint32_t first, ...) {
    va_list arguments;
    va_start(arguments, first);
    const vorn::GatheredWords words(first, arguments);
    va_end(arguments);
    return words.data() && VORN_M_SetImageInfoTags(first, words.rest());
}

VORN_Bool VORN_M_SetCommandReturn(uint32_t first, const VORN_Word* rest) {
    vorn::ModuleState& state = vorn::moduleState();
    if (state.replySent) return 0;
    state.replySent = true;
    VORN_L_EndReadingSharedStuff(&state.stuff);
    return vorn::send(state, first, rest);
}

VORN_Bool VORN_M_SetVaCommandReturn(uint32_t first, ...) {
    va_list arguments;
    va_start(arguments, first);
    const vorn::GatheredWords words(first, arguments);
    va_end(arguments);
    return words.data() && VORN_M_SetCommandReturn(first, words.rest());
}

}  // extern "C"
