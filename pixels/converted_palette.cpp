#include "pixels/converted_palette.h"

#include <vorn/library.h>

#include <cstring>

#include "errors/error_numbers.h"
#include "pixels/data_format.h"
#include "pixels/line_routines.h"
#include "tags/tag_walk.h"
#include "transport/image.h"

namespace vorn {
namespace {

// An item's palette, checked: the head is a private copy, the entries lie inside the item.
struct PaletteView {
    int32_t colorSpace = 0;
    VORN_DataFormat format{};
    const uint8_t* entries = nullptr;
};

bool viewPalette(const VORN_TagItem* item, PaletteView& view) {
    constexpr uint32_t kFormatOffset = sizeof view.colorSpace;
    constexpr uint32_t kEntriesOffset = kFormatOffset + sizeof view.format;
    if (item == nullptr || itemDataSize(item) < kEntriesOffset) {
        return false;
    }
    const uint8_t* data = itemData(item);
    std::memcpy(&view.colorSpace, data, sizeof view.colorSpace);
    std::memcpy(&view.format, data + kFormatOffset, sizeof view.format);
    view.entries = data + kEntriesOffset;
    return hasValidSizes(view.format) &&
           linesInside(view.format, 1, itemDataSize(item) - kEntriesOffset);
}

// The colours that entries are converted to. A target without channels of its own ("not named",
// "None") gives colours where the buffer has room for them.
int32_t paletteColorSpace(int32_t target, int32_t bufferChannels) {
    if (target == VORN_CS_CMAPPED) {
        return VORN_CS_RGB;
    }
    if (VORN_L_ColorSpaceChannels(target) > 0) {
        return target;
    }
    return bufferChannels >= 3 ? VORN_CS_RGB : VORN_CS_GRAY;
}

}  // namespace

Owned<VORN_ChunkyBuffer> convertedPalette(const VORN_Image& image,
                                          const VORN_ChunkyBuffer& buffer) {
    const int32_t colorSpace = paletteColorSpace(image.targetColorSpace, buffer.channels);
    return Owned<VORN_ChunkyBuffer>(
        VORN_L_ConvertPalette(VORN_L_TagFind(image.imageTags, ITAG_Palette), buffer.bytesPerChannel,
                              VORN_L_ColorSpaceChannels(colorSpace), buffer.flags, colorSpace));
}

bool hasNeededPalette(VORN_Image& image,
                      const Owned<VORN_ChunkyBuffer>& palette,
                      int32_t otherwise) {
    if (image.colorConversion != kConversionPalette || palette != nullptr) {
        return true;
    }
    PaletteView view;
    const bool inOrder = viewPalette(VORN_L_TagFind(image.imageTags, ITAG_Palette), view);
    VORN_L_SetErrorCode(&image, inOrder ? int32_t{kErrorMemory} : otherwise, 0);
    return false;
}

}  // namespace vorn

VORN_ChunkyBuffer* VORN_L_ConvertPalette(
    const VORN_TagItem* item, int32_t bytes, int32_t channels, uint32_t flags, int32_t target) {
    vorn::PaletteView palette;
    if (!vorn::viewPalette(item, palette) || channels < 1 || channels > VORN_MAX_CHANNELS) {
        return nullptr;
    }
    const int32_t sampleSize = bytes < 2 ? 1 : 2;
    const size_t entryBytes = static_cast<size_t>(palette.format.width) *
                              static_cast<size_t>(channels) * static_cast<size_t>(sampleSize);
    auto* made = static_cast<VORN_ChunkyBuffer*>(
        AllocMemory(sizeof(VORN_ChunkyBuffer) + entryBytes, MEMORY_Clear));
    if (made == nullptr) {
        return nullptr;
    }
    made->layout = vorn::lineInterleavedLayout(sampleSize);
    made->width = palette.format.width;
    made->height = palette.format.height;
    made->channels = channels;
    made->bytesPerChannel = sampleSize;
    made->flags = flags;
    made->channelPlace[0] = reinterpret_cast<uint8_t*>(made + 1);
    VORN_L_ChunkyBufferMacroSetup(made);
    uint32_t code = 0;
    VORN_L_SetColorSpaceCorrection(&code, palette.colorSpace, target);
    VORN_L_CopyDataFormatToChunkyBuffer(&palette.format, palette.entries, made, 0, 0, code,
                                        nullptr);
    return made;
}
