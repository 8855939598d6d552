#include "module/module_state.h"

#include <vorn/library.h>

#include "support/thread_state.h"
#include "tags/tag_walk.h"

namespace vorn {

ModuleState& moduleState() { return threadState<ModuleState>(); }

bool sendEmptyReply(ModuleState& state) {
    void* place = VORN_L_StartWritingSharedStuff(&state.stuff, kEndItemSize);
    if (!place) return false;
    VORN_L_writetag(place, TAG_End, nullptr, 0);
    VORN_L_EndWritingSharedStuff(&state.stuff);
    return true;
}

bool isInterrupt(const VORN_TagItem* message) {
    return VORN_L_TagFind(message, TAG_Interrupt) != nullptr;
}

}  // namespace vorn

extern "C" {

void VORN_M_SetErrorCode(int32_t code, int32_t subcode) {
    vorn::ModuleState& state = vorn::moduleState();
    state.errorPending = true;
    state.error[0] = code;
    state.error[1] = subcode;
}

void VORN_M_SetWarningCode(int32_t code, int32_t subcode) { VORN_M_SetErrorCode(code, subcode); }

}  // extern "C"
