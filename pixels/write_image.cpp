#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <cstdarg>

#include "errors/error_numbers.h"
#include "pixels/converted_palette.h"
#include "pixels/transfer.h"
#include "pixels/write_format.h"
#include "tags/gathered_words.h"
#include "transport/image.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

struct WriteStateDeleter {
    void operator()(VORN_WriteState* state) const { VORN_L_ImageWriteChunkyEnd(state); }
};

bool fail(VORN_Image& image, int32_t code) {
    VORN_L_SetErrorCode(&image, code, 0);
    return false;
}

// How many lines a block carries: as many as fit, fewer when a meter should move. 0 (error 29) when
// a single line doesn't fit.
int32_t linesPerBlock(VORN_Image& image,
                      const VORN_WriteState* state,
                      const TransferOptions& options,
                      int32_t height) {
    const int32_t fitting = (image.stuff.writeSize - kBlockMargin) / VORN_L_GetLineSize(state);
    if (fitting < 1) {
        fail(image, kErrorTooLarge);
    }
    return std::min(linesPerStep(options, height), fitting);
}

bool sendLines(VORN_Image& image,
               const VORN_ImageBuffer& buffer,
               const TransferOptions& options,
               const VORN_ChunkyBuffer* palette) {
    VORN_ChunkyBuffer lines = correctedBuffer(image, buffer.chunky);
    const int32_t height = lines.height;
    const std::unique_ptr<VORN_WriteState, WriteStateDeleter> state(
        VORN_L_ImageWriteChunkyBegin(&image, &lines, options.abort, options.abortData, palette));
    if (!state) {
        return false;
    }
    const int32_t step = linesPerBlock(image, state.get(), options, height);
    if (step < 1) {
        return false;
    }
    Meter meter(image, options, height);
    for (int32_t done = 0; done < height;) {
        lines.height = std::min(step, height - done);
        const int32_t got = VORN_L_ImageWriteLineChunky(state.get(), &lines, done);
        if (got == 0) {
            return false;
        }
        advanceLines(lines, got);
        meter.advance(got, false);
        done += got;
    }
    return true;
}

// The size of the picture, as the tags describe it, is the saver's business and must be the
// buffer's: there is no scaling on this path (and no error number for it).
bool hasPictureSize(VORN_Image& image, const VORN_ChunkyBuffer& buffer) {
    const bool scaled = image.sizeDiffers;
    return !noteBufferSize(image, buffer, image.outputWidth, image.outputHeight) && !scaled;
}

bool writeAll(VORN_Image& image, const VORN_ImageBuffer* buffer, const TransferOptions& options) {
    if (!VORN_L_PrepareTransfer(&image)) {
        return false;
    }
    if (buffer == nullptr || buffer->type != VORN_BUFFER_CHUNKY) {
        return fail(image, kErrorArgument);
    }
    if (!VORN_L_StartWritingImage(&image) || !hasPictureSize(image, buffer->chunky)) {
        return false;
    }
    const Owned<VORN_ChunkyBuffer> palette = convertedPalette(image, buffer->chunky);
    return hasNeededPalette(image, palette, kErrorArgument) &&
           sendLines(image, *buffer, options, palette.get());
}

}  // namespace
}  // namespace vorn

VORN_Bool VORN_H_ImageWriteData(VORN_Image* image,
                                const VORN_ImageBuffer* buffer,
                                const VORN_Word* tags) {
    vorn::transferAborted() = false;
    image->block = vorn::BlockPosition{};
    if (!vorn::writeAll(*image, buffer, vorn::transferOptions(tags))) {
        return vorn::abandonTransfer(*image);
    }
    // The end of the data; its acknowledgement says how it went.
    return VORN_L_SendCMDAbort(image) && VORN_L_WaitForAck(image);
}

VORN_Bool VORN_H_ImageVaWriteData(VORN_Image* image, const VORN_ImageBuffer* buffer, ...) {
    va_list arguments;
    va_start(arguments, buffer);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() != nullptr ? VORN_H_ImageWriteData(image, buffer, words.data())
                                   : vorn::fail(*image, vorn::kErrorMemory);
}
