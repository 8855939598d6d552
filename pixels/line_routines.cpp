#include "pixels/line_routines.h"

#include <cstring>

#include "pixels/line_chunks.h"
#include "pixels/line_kernels.h"
#include "pixels/line_view.h"

namespace vorn {
namespace {

void copyChannel(const LineTask& task, int32_t from, int32_t to) {
    const VORN_ChunkyBuffer& in = task.source;
    const VORN_ChunkyBuffer& out = task.destination;
    copyKernelFor(task.sizeFlags, in.pixelStep[from], out.pixelStep[to])(
        lineStart(in, from, task.sourceLine), in.pixelStep[from],
        lineStart(out, to, task.destinationLine), out.pixelStep[to], out.width);
}

void convertColors(ConvertKernel kernel,
                   const LineTask& task,
                   int32_t sourceChannels,
                   int32_t destinationChannels,
                   AbsentColor absent = AbsentColor::Zero) {
    ChunkedLine source(task.source, task.sourceLine, sourceChannels);
    ChunkedLine destination(task.destination, task.destinationLine, destinationChannels);
    source.fillAbsent(absent);
    const int32_t width = task.destination.width;
    for (int32_t first = 0; first < width; first += kChunkSamples) {
        const int32_t count = std::min(kChunkSamples, width - first);
        source.open(first, count);
        destination.open(first, count);
        source.gather();
        kernel(source.rows(), destination.rows(), count);
        destination.scatter();
    }
}

bool suitsToGray(const LineTask& task) {
    return presentColors(task.source) == 3 && task.destination.channels < 3;
}

bool suitsFromGray(const LineTask& task) {
    return presentColors(task.destination) > 0 && task.destination.channels >= 3 &&
           task.source.channels <= 2;
}

bool suitsThreeColors(const LineTask& task) {
    return presentColors(task.source) > 0 && task.source.channels >= 3 &&
           presentColors(task.destination) > 0 && task.destination.channels >= 3;
}

uint32_t VORN_L_ConvCopy(const LineTask& task, bool query) {
    if (!query) {
        copyChannels(task, 0, 0);
    }
    return kConversionCopy;
}

uint32_t VORN_L_ConvRGBToGray(const LineTask& task, bool query) {
    if (query) {
        return suitsToGray(task) ? 1 : kConversionCopy;
    }
    if (isPresent(task.destination, 0)) {
        convertColors(convertKernels().rgbToGray[task.sizeFlags], task, 3, 1);
    }
    return 1;
}

uint32_t VORN_L_ConvGrayToRGB(const LineTask& task, bool query) {
    if (query) {
        return suitsFromGray(task) ? 2 : kConversionCopy;
    }
    for (int32_t c = 0; c < 3 && isPresent(task.source, 0); c++) {
        if (isPresent(task.destination, c)) {
            copyChannel(task, 0, c);
        }
    }
    return 2;
}

uint32_t VORN_L_ConvYUV601ToGray(const LineTask& task, bool query) {
    if (query) {
        return suitsToGray(task) ? 3 : kConversionCopy;
    }
    if (isPresent(task.destination, 0)) {
        convertColors(convertKernels().yuv601ToGray[task.sizeFlags], task, 1, 1);
    }
    return 3;
}

uint32_t VORN_L_ConvGrayToYUV601(const LineTask& task, bool query) {
    if (query) {
        return suitsFromGray(task) ? 4 : kConversionCopy;
    }
    if (isPresent(task.source, 0)) {
        convertColors(convertKernels().grayToYuv601[task.sizeFlags], task, 1, 3);
    }
    return 4;
}

uint32_t VORN_L_ConvYUV601ToRGB(const LineTask& task, bool query) {
    if (query) {
        return suitsThreeColors(task) ? 5 : kConversionCopy;
    }
    convertColors(convertKernels().yuv601ToRgb[task.sizeFlags], task, 3, 3,
                  AbsentColor::MiddleChroma);
    return 5;
}

uint32_t VORN_L_ConvRGBToYUV601(const LineTask& task, bool query) {
    if (query) {
        return suitsThreeColors(task) ? 6 : kConversionCopy;
    }
    convertColors(convertKernels().rgbToYuv601[task.sizeFlags], task, 3, 3);
    return 6;
}

uint32_t VORN_L_ConvPalette(const LineTask& task, bool query) {
    if (query || task.palette == nullptr || !isPresent(task.source, 0)) {
        return kConversionPalette;
    }
    const VORN_ChunkyBuffer& palette = *task.palette;
    const VORN_ChunkyBuffer& out = task.destination;
    const uint8_t* indices = lineStart(task.source, 0, task.sourceLine);
    for (int32_t c = 0; c < usedChannels(palette); c++) {
        if (isPresent(palette, c) && isPresent(out, c)) {
            lookupKernels().form[task.sizeFlags](
                indices, task.source.pixelStep[0], palette.channelPlace[c], palette.width,
                lineStart(out, c, task.destinationLine), out.pixelStep[c], out.width);
        }
    }
    return kConversionPalette;
}

// The first byte of the lines' common pixels when their channels fill equal pixels without gaps
// (such lines are one run of bytes), else null.
const uint8_t* packedPixels(const LineTask& task, int32_t channels, uint8_t*& destination) {
    const VORN_ChunkyBuffer& in = task.source;
    const VORN_ChunkyBuffer& out = task.destination;
    const ptrdiff_t size = in.bytesPerChannel == 2 ? 2 : 1;
    const uint8_t* lowest = nullptr;
    for (int32_t c = 0; c < channels; c++) {
        if (!isPresent(in, c) || !isPresent(out, c) || in.pixelStep[c] != size * channels ||
            out.pixelStep[c] != size * channels) {
            return nullptr;
        }
        const uint8_t* from = lineStart(in, c, task.sourceLine);
        if (lowest == nullptr || from < lowest) {
            lowest = from;
            destination = lineStart(out, c, task.destinationLine);
        }
    }
    uint32_t filled = 0;
    for (int32_t c = 0; c < channels; c++) {
        const ptrdiff_t offset = lineStart(in, c, task.sourceLine) - lowest;
        if (offset >= size * channels || offset % size != 0 ||
            lineStart(out, c, task.destinationLine) - destination != offset) {
            return nullptr;
        }
        filled |= 1u << (offset / size);
    }
    return filled == (1u << channels) - 1 ? lowest : nullptr;
}

}  // namespace

const LineConversion& lineConversion(uint32_t code) {
    static constexpr LineConversion kConversions[] = {
        {VORN_L_ConvCopy, LineConversion::kAll, LineConversion::kAll},
        {VORN_L_ConvRGBToGray, 3, 1},
        {VORN_L_ConvGrayToRGB, 1, 3},
        {VORN_L_ConvYUV601ToGray, 3, 1},
        {VORN_L_ConvGrayToYUV601, 1, 3},
        {VORN_L_ConvYUV601ToRGB, 3, 3},
        {VORN_L_ConvRGBToYUV601, 3, 3},
        {VORN_L_ConvPalette, 1, LineConversion::kAll},
    };
    return kConversions[code <= kConversionPalette ? code : kConversionCopy];
}

void copyChannels(const LineTask& task, int32_t firstSource, int32_t firstDestination) {
    const int32_t channels = std::min(usedChannels(task.source) - firstSource,
                                      usedChannels(task.destination) - firstDestination);
    const bool sameSize = task.sizeFlags == 0 || task.sizeFlags == 3;
    if (sameSize && firstSource == 0 && firstDestination == 0 && channels > 1) {
        uint8_t* to = nullptr;
        if (const uint8_t* from = packedPixels(task, channels, to)) {
            std::memcpy(to, from,
                        static_cast<size_t>(task.destination.width) *
                            static_cast<size_t>(task.source.pixelStep[0]));
            return;
        }
    }
    for (int32_t c = 0; c < channels; c++) {
        if (isPresent(task.source, firstSource + c) &&
            isPresent(task.destination, firstDestination + c)) {
            copyChannel(task, firstSource + c, firstDestination + c);
        }
    }
}

}  // namespace vorn
