// A loader's blocks of lines.
#include <vorn/library.h>
#include <vorn/module.h>

#include <algorithm>
#include <cstring>

#include "errors/error_numbers.h"
#include "module/module_state.h"
#include "tags/tag_walk.h"

namespace vorn {
namespace {

constexpr int32_t kTagRoom = 256;    // bytes of a block that are kept for the tags around the data
constexpr uint32_t kBlockTags = 64;  // bytes that they take at most
constexpr int32_t kMostLines = 16;

// Looks for a host message without waiting. True when it stops the transfer.
bool hostInterrupts(ModuleState& state) {
    const void* message = VORN_L_AttemptStartReadingSharedStuff(&state.stuff);
    if (!message) return false;
    const bool interrupt = isInterrupt(static_cast<const VORN_TagItem*>(message));
    VORN_L_EndReadingSharedStuff(&state.stuff);
    if (!interrupt) return false;
    state.interrupted = true;
    sendEmptyReply(state);
    return true;
}

void* longItem(void* place, uint32_t id, int32_t value) {
    return VORN_L_writetag(place, id, &value, sizeof value);
}

}  // namespace
}  // namespace vorn

extern "C" {

int32_t VORN_M_SendImageDataMaxSize(void) {
    return vorn::moduleState().stuff.writeSize - vorn::kTagRoom;
}

VORN_Bool VORN_M_AllocateLoadBuffer(int32_t lineSize,
                                    int32_t mostLines,
                                    void** buffer,
                                    int32_t* lines) {
    const int32_t fitting = lineSize > 0 ? VORN_M_SendImageDataMaxSize() / lineSize : 0;
    for (int32_t count = std::min({fitting, mostLines, vorn::kMostLines}); count >= 1; count /= 2) {
        *buffer = AllocMemory(static_cast<size_t>(count) * static_cast<size_t>(lineSize), 0);
        if (!*buffer) continue;
        *lines = count;
        return 1;
    }
    VORN_M_SetErrorCode(vorn::kErrorMemory, 0);
    return 0;
}

void VORN_M_FreeLoadBuffer(void* buffer) { FreeMemory(buffer); }

void* VORN_M_SendImageDataBegin(
    int32_t width, int32_t lines, int32_t firstLine, void*, int32_t size) {
    vorn::ModuleState& state = vorn::moduleState();
    if (size < 0 || vorn::hostInterrupts(state)) return nullptr;
    const auto bytes = static_cast<uint32_t>(size);
    void* place = VORN_L_StartWritingSharedStuff(&state.stuff, bytes + vorn::kBlockTags);
    if (!place) return nullptr;
    place = vorn::longItem(place, ITAG_ReadWidth, width);
    place = vorn::longItem(place, ITAG_ReadHeight, lines);
    place = vorn::longItem(place, ITAG_ReadLineNo, firstLine);
    void* behind = VORN_L_writetagnodata(place, ITAG_Data, nullptr, bytes);
    VORN_L_writetag(behind, TAG_End, nullptr, 0);
    return static_cast<uint8_t*>(place) + vorn::kItemHead;
}

VORN_Bool VORN_M_SendImageDataEnd(void) {
    VORN_L_EndWritingSharedStuff(&vorn::moduleState().stuff);
    return 1;
}

VORN_Bool VORN_M_SendImageData(
    int32_t width, int32_t lines, int32_t firstLine, const void* data, int32_t size) {
    void* place = VORN_M_SendImageDataBegin(width, lines, firstLine, nullptr, size);
    if (!place) return 0;
    std::memcpy(place, data, static_cast<size_t>(size));
    return VORN_M_SendImageDataEnd();
}

}  // extern "C"
