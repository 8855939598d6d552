// Image buffers and palette records: what hosts hand over besides pixels.
#include <vorn/host.h>
#include <vorn/library.h>

#include "errors/error_numbers.h"
#include "pixels/data_format.h"

namespace {

static_assert(sizeof(void*) != 4 || sizeof(VORN_ImageBuffer) == 132);
static_assert(offsetof(VORN_ImageBuffer, type) == 0);
static_assert(sizeof(void*) != 4 || offsetof(VORN_ImageBuffer, chunky) == 4);
static_assert(offsetof(VORN_Palette, byteCount) == 0);
static_assert(offsetof(VORN_Palette, colorSpace) == 4);
static_assert(offsetof(VORN_Palette, format) == 8);
static_assert(sizeof(VORN_Palette) == 136, "the entries begin here");

void* allocOrRecord(size_t size) {
    void* block = AllocMemory(size, MEMORY_Clear);
    if (block == nullptr) {
        VORN_L_SetErrorCode(nullptr, vorn::kErrorMemory, 0);
    }
    return block;
}

// The layout of the record's entries: the buffer's own when its cells hold exactly these entries,
// else runs of the channels, which always do.
int32_t paletteLayout(const VORN_ChunkyBuffer& entries) {
    int32_t code = entries.layout;
    if (vorn::standardLayout(code) == nullptr) {
        code = entries.bytesPerChannel < 2 ? DF_Chunky3x8 : DF_Chunky3x16;
    }
    const vorn::StandardLayout& layout = *vorn::standardLayout(code);
    const bool fits = layout.bytesPerChannel == entries.bytesPerChannel &&
                      (layout.cell == 1 || layout.cell == entries.channels);
    return fits ? code : vorn::lineInterleavedLayout(entries.bytesPerChannel);
}

bool isPaletteLine(const VORN_ChunkyBuffer* entries) {
    if (entries == nullptr) {
        return false;
    }
    VORN_ChunkyBuffer line = *entries;
    line.height = 1;
    return vorn::hasValidSizes(line);
}

}  // namespace

VORN_ImageBuffer* VORN_H_AllocateImageBuffer(int32_t type) {
    auto* buffer = static_cast<VORN_ImageBuffer*>(allocOrRecord(sizeof(VORN_ImageBuffer)));
    if (buffer != nullptr) {
        buffer->type = type;
    }
    return buffer;
}

VORN_ImageBuffer* VORN_H_AllocateChunkyImageBuffer(void) {
    return VORN_H_AllocateImageBuffer(VORN_BUFFER_CHUNKY);
}

void VORN_H_FreeImageBuffer(VORN_ImageBuffer* buffer) { FreeMemory(buffer); }

VORN_Palette* VORN_H_CreatePaletteData(const VORN_ChunkyBuffer* entries, int32_t colorSpace) {
    if (!isPaletteLine(entries)) {
        VORN_L_SetErrorCode(nullptr, vorn::kErrorArgument, 0);
        return nullptr;
    }
    const auto entryBytes =
        static_cast<uint32_t>(entries->width * entries->channels * entries->bytesPerChannel);
    auto* palette = static_cast<VORN_Palette*>(allocOrRecord(sizeof(VORN_Palette) + entryBytes));
    if (palette == nullptr) {
        return nullptr;
    }
    palette->byteCount = entryBytes + sizeof(VORN_Palette) - sizeof(palette->byteCount);
    palette->colorSpace = static_cast<uint32_t>(colorSpace);
    vorn::copyHeader(palette->format, *entries);
    palette->format.layout = paletteLayout(*entries);
    palette->format.height = 1;
    VORN_L_DataFormatMacroSetup(&palette->format);
    VORN_L_CopyChunkyBufferToDataFormat(entries, &palette->format, palette + 1, 0, 0, 0, nullptr);
    return palette;
}

void VORN_H_FreePaletteData(VORN_Palette* palette) { FreeMemory(palette); }
