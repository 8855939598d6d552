#include "pixels/line_routines.h"

#include <bit>
#include <cstring>

#include "pixels/channel_mover.h"
#include "pixels/line_chunks.h"
#include "pixels/line_kernels.h"
#include "pixels/line_view.h"
#include "pixels/palette_cells.h"

namespace vorn {
namespace {

// One channel of the task's lines.
ChannelMove channelMove(const LineTask& task, int32_t from, int32_t to) {
    return {lineStart(task.source, from, task.sourceLine), task.source.pixelStep[from],
            lineStart(task.destination, to, task.destinationLine), task.destination.pixelStep[to]};
}

void convertColors(ConvertKernel kernel,
                   const LineTask& task,
                   int32_t sourceChannels,
                   int32_t destinationChannels,
                   AbsentColor absent = AbsentColor::Zero) {
    ChunkedLine source(ChunkedLine::Source, task.source, task.sourceLine, sourceChannels);
    ChunkedLine destination(ChunkedLine::Destination, task.destination, task.destinationLine,
                            destinationChannels);
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
    ChannelMover mover(task.sizeFlags);
    for (int32_t c = 0; c < 3 && isPresent(task.source, 0); c++) {
        if (isPresent(task.destination, c)) {
            mover.add(channelMove(task, 0, c));
        }
    }
    mover.plan();
    mover.move(0, 0, task.destination.width);
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
    if (suitsPaletteCells(task)) {
        lookUpCells(task);
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

// True when the lines' common pixels are equal cells without gaps, so that each side is one run of
// samples; `ahead` is then how many of them lie before that of channel 0 in a cell.
bool isOneRun(const LineTask& task, int32_t channels, ptrdiff_t& ahead) {
    const VORN_ChunkyBuffer& in = task.source;
    const VORN_ChunkyBuffer& out = task.destination;
    const int32_t inSize = (task.sizeFlags & 2) != 0 ? 2 : 1;
    const int32_t outSize = (task.sizeFlags & 1) != 0 ? 2 : 1;
    const int32_t inCell = channels * inSize;
    const int32_t outCell = channels * outSize;
    constexpr int kMiddle = 2 * VORN_MAX_CHANNELS;
    uint64_t begun = 0;  // one bit for each byte with which a sample begins; that of channel 0 is
                         // in the middle
    for (int32_t c = 0; c < channels; c++) {
        const ptrdiff_t from = in.channelPlace[c] - in.channelPlace[0];
        const ptrdiff_t to = out.channelPlace[c] - out.channelPlace[0];
        if (in.pixelStep[c] != inCell || out.pixelStep[c] != outCell ||
            in.lineStep[c] != in.lineStep[0] || out.lineStep[c] != out.lineStep[0] ||
            from * outSize != to * inSize || from <= -inCell || from >= inCell) {
            return false;
        }
        begun |= uint64_t{1} << (kMiddle + from);
    }
    const int lowest = std::countr_zero(begun);
    const uint64_t all = (inSize == 1 ? 0xFFFFu : 0x5555u) & ((1u << inCell) - 1);
    ahead = (kMiddle - lowest) >> (inSize - 1);
    return isPresent(in, 0) && isPresent(out, 0) && begun >> lowest == all;
}

// Channels in runs of their own are as many streams, which the processor has to find anew in each
// line: this calls their next line's first bytes. An address need not be one.
void callNextLine(const VORN_ChunkyBuffer& buffer, const ChannelMove& channel, int32_t lineStep) {
    constexpr uintptr_t kReach = 512, kCacheLine = 64;
    if (channel.fromStep != (buffer.bytesPerChannel == 2 ? 2 : 1)) return;
    const auto next = reinterpret_cast<uintptr_t>(channel.from) + static_cast<uintptr_t>(lineStep);
    for (uintptr_t at = 0; at < kReach; at += kCacheLine)
        __builtin_prefetch(reinterpret_cast<const void*>(next + at));
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
    ptrdiff_t ahead = 0;
    if (channels > 0 && firstSource == 0 && firstDestination == 0 &&
        isOneRun(task, channels, ahead)) {
        const int32_t samples = task.destination.width * channels;
        const ChannelMove first = channelMove(task, 0, 0);
        const ptrdiff_t in = (task.sizeFlags & 2) != 0 ? 2 : 1;
        const ptrdiff_t out = (task.sizeFlags & 1) != 0 ? 2 : 1;
        const uint8_t* from = first.from - ahead * in;
        uint8_t* to = first.to - ahead * out;
        if (in == out) {
            std::memcpy(to, from, static_cast<size_t>(samples * in));
        } else {
            copyKernels().form[task.sizeFlags][1][1](from, in, to, out, samples);
        }
        return;
    }
    ChannelMover mover(task.sizeFlags);
    for (int32_t c = 0; c < channels; c++) {
        if (isPresent(task.source, firstSource + c) &&
            isPresent(task.destination, firstDestination + c)) {
            const ChannelMove channel = channelMove(task, firstSource + c, firstDestination + c);
            callNextLine(task.source, channel, task.source.lineStep[firstSource + c]);
            mover.add(channel);
        }
    }
    mover.plan();
    mover.move(0, 0, task.destination.width);
}

}  // namespace vorn
