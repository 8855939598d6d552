#include "pixels/write_format.h"

#include <vorn/library.h>

#include "pixels/block_channels.h"
#include "pixels/data_format.h"
#include "pixels/line_routines.h"
#include "tags/tag_walk.h"

namespace vorn {

uint32_t blockMessageSize(uint32_t lineBytes) {
    const auto formatItem = static_cast<uint32_t>(kItemHead + sizeof(VORN_DataFormat));
    return kLongItemSize + formatItem + kItemHead + roundUp4(lineBytes) + kEndItemSize;
}

bool makeBlockFormat(const VORN_ChunkyBuffer& buffer,
                     uint32_t conversion,
                     const VORN_ChunkyBuffer* palette,
                     VORN_DataFormat& format) {
    if (conversion == kConversionPalette && palette == nullptr) {
        return false;
    }
    format = VORN_DataFormat{};
    format.layout = lineInterleavedLayout(buffer.bytesPerChannel);
    format.width = buffer.width;
    format.height = 1;
    format.channels =
        blockChannels(buffer.channels, conversion, palette != nullptr ? palette->channels : 0);
    format.bytesPerChannel = buffer.bytesPerChannel;
    if (!hasValidSizes(format)) {
        return false;
    }
    // Blocks say their steps and places explicitly, and leave the significant bits open.
    VORN_L_DataFormatMacroSetup(&format);
    format.layout = DF_Explicit;
    std::fill_n(format.bitsPerChannel, VORN_MAX_CHANNELS, uint8_t{0});
    return true;
}

}  // namespace vorn
