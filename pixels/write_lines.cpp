// Blocks of lines to a saver. Each carries its own data format.
#include <vorn/library.h>

#include "errors/error_numbers.h"
#include "pixels/transfer.h"
#include "pixels/write_format.h"
#include "support/memory.h"
#include "tags/tag_walk.h"
#include "transport/image.h"
#include "transport/message.h"
#include "transport/module_process.h"

struct VORN_WriteState {
    VORN_Image* image;
    VORN_AbortCallback abort;
    VORN_Word abortData;
    const VORN_ChunkyBuffer* palette;
    VORN_DataFormat format;  // its height is that of the block that is sent last
    int32_t lineSize;
};

namespace vorn {
namespace {

// Looks, without waiting, whether the saver has said that it takes no more.
bool saverHasStopped(VORN_Image& image) {
    Message message;
    bool broken = false;
    if (!tryReceiveMessage(image, message, broken)) {
        return broken;
    }
    const bool acknowledged = VORN_L_HandleAckMsg(&image, message.list);
    const bool error = VORN_L_HandleErrorCode(&image, message.list);
    VORN_L_ImageHandleEndReading(&image);
    if (acknowledged && !error) VORN_L_SetErrorCode(&image, kErrorModuleStopped, 0);
    return acknowledged || error;
}

bool maySend(const VORN_WriteState& state) {
    VORN_Image& image = *state.image;
    if (!ModuleIsRunning(image)) {
        VORN_L_SetErrorCode(&image, kErrorModuleStopped, 0);
        return false;
    }
    return !saverHasStopped(image) && ModuleIsRunning(image) &&
           !askAbort(image, state.abort, state.abortData);
}

void writeBlock(void* place,
                const VORN_WriteState& state,
                const VORN_ChunkyBuffer& lines,
                int32_t first) {
    const VORN_DataFormat& format = state.format;
    const auto bytes = static_cast<uint32_t>(format.height * state.lineSize);
    place = VORN_L_writetag(place, ITAG_ReadLineNo, &first, sizeof first);
    place = VORN_L_writetag(place, ITAG_DataFormat, &format, sizeof format);
    uint8_t* data = static_cast<uint8_t*>(place) + kItemHead;
    place = VORN_L_writetagnodata(place, ITAG_Data, nullptr, bytes);
    for (int32_t i = 0; i < format.height; i++) {
        VORN_L_CopyChunkyBufferToDataFormat(&lines, &format, data, i, i,
                                            state.image->colorConversion, state.palette);
    }
    VORN_L_writetag(place, TAG_End, nullptr, 0);
}

}  // namespace
}  // namespace vorn

VORN_WriteState* VORN_L_ImageWriteChunkyBegin(VORN_Image* image,
                                              const VORN_ChunkyBuffer* buffer,
                                              VORN_AbortCallback abort,
                                              VORN_Word abortData,
                                              const VORN_ChunkyBuffer* palette) {
    VORN_DataFormat format;
    if (!vorn::makeBlockFormat(*buffer, image->colorConversion, palette, format)) {
        VORN_L_SetErrorCode(image, vorn::kErrorArgument, 0);
        return nullptr;
    }
    VORN_WriteState* state = vorn::allocCleared<VORN_WriteState>().release();
    if (state == nullptr) {
        VORN_L_SetErrorCode(image, vorn::kErrorMemory, 0);
        return nullptr;
    }
    *state = {image, abort, abortData, palette, format, format.lineStep[0]};
    return state;
}

void VORN_L_ImageWriteChunkyEnd(VORN_WriteState* state) { FreeMemory(state); }

int32_t VORN_L_ImageWriteLineChunky(VORN_WriteState* state,
                                    const VORN_ChunkyBuffer* buffer,
                                    int32_t first) {
    VORN_Image* image = state->image;
    const int64_t bytes = int64_t{buffer->height} * state->lineSize;
    if (!vorn::maySend(*state)) {
        return 0;
    }
    if (buffer->height < 1 || bytes > image->stuff.writeSize) {
        VORN_L_SetErrorCode(image, vorn::kErrorTooLarge, 0);
        return 0;
    }
    void* place =
        VORN_L_ImageHandleStartWriting(image, vorn::blockMessageSize(static_cast<uint32_t>(bytes)));
    if (place == nullptr) {
        return 0;
    }
    state->format.height = buffer->height;
    vorn::writeBlock(place, *state, *buffer, first);
    VORN_L_ImageHandleEndWriting(image);
    return buffer->height;
}

int32_t VORN_L_GetLineSize(const VORN_WriteState* state) { return state->lineSize; }

int32_t VORN_L_WriteImageDataMaxSize(VORN_Image* image) {
    constexpr int32_t kCallersMargin = 1024;
    return image->stuff.writeSize - kCallersMargin;
}
