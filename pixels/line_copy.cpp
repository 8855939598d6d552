// The one routine through which every line of pixels moves, and the choice of its conversion.
#include <vorn/library.h>

#include <cstring>

#include "pixels/data_format.h"
#include "pixels/line_kernels.h"
#include "pixels/line_routines.h"
#include "pixels/line_view.h"

using vorn::LineConversion;
using vorn::LineTask;

namespace {

// True when a buffer's channels lie side by side in their order, without gaps: most lines do, and a
// look that takes so little is felt in short ones.
inline bool isPacked(const VORN_ChunkyBuffer& buffer, int32_t channels, int32_t size) {
    const uint8_t* const first = buffer.channelPlace[0];
    const int32_t pixel = channels * size, line = buffer.lineStep[0];
    if (first == nullptr || buffer.pixelStep[0] != pixel) return false;
    bool differs = false;
    for (int32_t c = 1; c < channels; c++) {
        differs |= (buffer.pixelStep[c] != pixel) | (buffer.lineStep[c] != line) |
                   (buffer.channelPlace[c] != first + c * size);
    }
    return !differs;
}

}  // namespace

VORN_Bool VORN_L_SetColorSpaceCorrection(uint32_t* code, int32_t source, int32_t destination) {
    // By destination: Gray, RGB, YUV601, and everything else. Only "YUV601" takes part in
    // conversions from and to YUV; "YUV", "CMY" and "CMYK" are never converted.
    struct Row {
        uint32_t gray, rgb, yuv601;
    };
    constexpr Row kNone = {0, 0, 0};
    constexpr Row kRows[] = {kNone, {0, 2, 4}, {1, 0, 6}, kNone, {3, 5, 0}, kNone, kNone};
    *code = 0;
    if (source == VORN_CS_CMAPPED) {
        *code = destination == VORN_CS_CMAPPED ? 0 : vorn::kConversionPalette;
    } else if (source > VORN_CS_NONE && source < VORN_CS_CMAPPED) {
        const Row& row = kRows[source];
        *code = destination == VORN_CS_GRAY     ? row.gray
                : destination == VORN_CS_RGB    ? row.rgb
                : destination == VORN_CS_YUV601 ? row.yuv601
                                                : 0;
    }
    return 1;
}

void VORN_L_CopyCBtoCB(const VORN_ChunkyBuffer* source,
                       const VORN_ChunkyBuffer* destination,
                       int32_t sourceLine,
                       int32_t destinationLine,
                       uint32_t code,
                       const VORN_ChunkyBuffer* palette) {
    const int32_t channels = source->channels, size = source->bytesPerChannel == 2 ? 2 : 1;
    if (code == vorn::kConversionCopy && channels == destination->channels && channels >= 1 &&
        channels <= VORN_MAX_CHANNELS && source->bytesPerChannel == destination->bytesPerChannel &&
        destination->width >= 1 && isPacked(*source, channels, size) &&
        isPacked(*destination, channels, size)) {
        std::memcpy(vorn::lineStart(*destination, 0, destinationLine),
                    vorn::lineStart(*source, 0, sourceLine),
                    static_cast<size_t>(destination->width) * static_cast<size_t>(channels * size));
        return;
    }
    const uint32_t sizes = vorn::sizeFlagsOf(source->bytesPerChannel, destination->bytesPerChannel);
    const LineTask task{*source, *destination, sourceLine, destinationLine, sizes, palette};
    if (destination->width < 1) {
        return;
    }
    const uint32_t used =
        code == vorn::kConversionCopy ? code : vorn::lineConversion(code).routine(task, true);
    if (used == vorn::kConversionCopy) {
        vorn::copyChannels(task, 0, 0);
        return;
    }
    if (used == vorn::kConversionPalette && palette == nullptr) {
        return;
    }
    const LineConversion& conversion = vorn::lineConversion(used);
    conversion.routine(task, false);

    // Further channels (alpha) follow the converted ones, a palette's as many as it has.
    const int32_t made = used == vorn::kConversionPalette ? vorn::usedChannels(*palette)
                                                          : conversion.destinationChannels;
    if (conversion.sourceChannels > 0 && made > 0) {
        vorn::copyChannels(task, conversion.sourceChannels, made);
    }
}

void VORN_L_CopyDataFormatToChunkyBuffer(const VORN_DataFormat* format,
                                         const void* base,
                                         const VORN_ChunkyBuffer* destination,
                                         int32_t sourceLine,
                                         int32_t destinationLine,
                                         uint32_t code,
                                         const VORN_ChunkyBuffer* palette) {
    const VORN_ChunkyBuffer source = vorn::bufferAt(*format, base);
    VORN_L_CopyCBtoCB(&source, destination, sourceLine, destinationLine, code, palette);
}

void VORN_L_CopyChunkyBufferToDataFormat(const VORN_ChunkyBuffer* source,
                                         const VORN_DataFormat* format,
                                         void* base,
                                         int32_t sourceLine,
                                         int32_t destinationLine,
                                         uint32_t code,
                                         const VORN_ChunkyBuffer* palette) {
    const VORN_ChunkyBuffer destination = vorn::bufferAt(*format, base);
    VORN_L_CopyCBtoCB(source, &destination, sourceLine, destinationLine, code, palette);
}
