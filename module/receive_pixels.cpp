// A saver's view of the host's blocks of lines.
#include <vorn/library.h>
#include <vorn/module.h>

#include <cstring>

#include "errors/error_numbers.h"
#include "module/module_state.h"
#include "pixels/data_format.h"
#include "support/memory.h"
#include "tags/tag_walk.h"

struct VORN_ImageDataState {
    int32_t linesLeft;  // of the current block
    int32_t lineIndex;  // the next line of it
    VORN_DataFormat format;
    int32_t firstLine;  // of the block in the image, for the module's own use
    const uint8_t* data;
    bool ended;
};

namespace vorn {
namespace {

constexpr uint32_t kPaletteHead =
    sizeof(uint32_t) + sizeof(VORN_DataFormat);  // without the byte count of the user form

bool endData(ModuleState& module, VORN_ImageDataState& state) {
    state.ended = true;
    VORN_L_EndReadingSharedStuff(&module.stuff);
    return false;
}

// Takes the next block. The message stays held: its lines are read in place.
bool fetchBlock(ModuleState& module, VORN_ImageDataState& state) {
    if (state.ended) return endData(module, state);
    VORN_L_EndReadingSharedStuff(&module.stuff);
    const auto* message =
        static_cast<const VORN_TagItem*>(VORN_L_StartReadingSharedStuff(&module.stuff));
    if (!message) return false;
    if (isInterrupt(message)) {
        module.interrupted = true;
        return endData(module, state);
    }
    const VORN_TagItem* format = VORN_L_TagFind(message, ITAG_DataFormat);
    const VORN_TagItem* data = VORN_L_TagFind(message, ITAG_Data);
    const VORN_TagItem* first = VORN_L_TagFind(message, ITAG_ReadLineNo);
    if (!format || !data || itemDataSize(format) < sizeof state.format)
        return endData(module, state);
    std::memcpy(&state.format, itemData(format), sizeof state.format);
    state.firstLine = first ? VORN_L_TagGetLongVal(first) : 0;
    state.data = itemData(data);
    state.lineIndex = 0;
    state.linesLeft = state.format.height;
    return true;
}

}  // namespace
}  // namespace vorn

extern "C" {

VORN_ImageDataState* VORN_M_CreateGetImageDataState(void) {
    VORN_ImageDataState* state = vorn::allocCleared<VORN_ImageDataState>().release();
    if (!state) VORN_M_SetErrorCode(vorn::kErrorMemory, 0);
    return state;
}

void VORN_M_DestroyImageDataState(VORN_ImageDataState* state) {
    if (!state) return;
    vorn::ModuleState& module = vorn::moduleState();
    if (module.stuff.readHeld) {
        VORN_L_EndReadingSharedStuff(&module.stuff);
        while (!state->ended) {
            const void* message = VORN_L_StartReadingSharedStuff(&module.stuff);
            if (!message) break;
            state->ended = module.interrupted =
                vorn::isInterrupt(static_cast<const VORN_TagItem*>(message));
            VORN_L_EndReadingSharedStuff(&module.stuff);
        }
    }
    FreeMemory(state);
}

int32_t VORN_M_GetImageData(const VORN_ChunkyBuffer* buffer, VORN_ImageDataState* state) {
    vorn::ModuleState& module = vorn::moduleState();
    if (state->ended) {
        VORN_L_EndReadingSharedStuff(&module.stuff);
        return 0;
    }
    int32_t line = 0;
    for (; line < buffer->height; ++line) {
        // A block without lines is passed over.
        while (state->linesLeft <= 0) {
            if (!vorn::fetchBlock(module, *state)) return line;
        }
        VORN_L_CopyDataFormatToChunkyBuffer(&state->format, state->data, buffer, state->lineIndex,
                                            line, 0, nullptr);
        --state->linesLeft;
        ++state->lineIndex;
    }
    return line;
}

VORN_Bool VORN_M_GetPalette(const VORN_TagItem* list,
                            VORN_ChunkyBuffer* buffer,
                            int32_t colorSpace) {
    const VORN_TagItem* item = VORN_L_TagFind(list, ITAG_Palette);
    if (!item || vorn::itemDataSize(item) < vorn::kPaletteHead) return 0;
    int32_t source = 0;
    VORN_DataFormat format;
    std::memcpy(&source, vorn::itemData(item), sizeof source);
    std::memcpy(&format, vorn::itemData(item) + sizeof source, sizeof format);
    if (!vorn::linesInside(format, 1, vorn::itemDataSize(item) - vorn::kPaletteHead)) return 0;
    if (buffer->channels != format.channels || buffer->width < format.width ||
        buffer->bytesPerChannel != format.bytesPerChannel) {
        return 0;
    }
    buffer->width = format.width;
    uint32_t code = 0;
    VORN_L_SetColorSpaceCorrection(&code, source, colorSpace);
    VORN_L_CopyDataFormatToChunkyBuffer(&format, vorn::itemData(item) + vorn::kPaletteHead, buffer,
                                        0, 0, code, nullptr);
    return 1;
}

}  // extern "C"
