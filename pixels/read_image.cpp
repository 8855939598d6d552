#include <vorn/host.h>
#include <vorn/library.h>

#include <cstdarg>
#include <cstring>

#include "errors/error_numbers.h"
#include "pixels/converted_palette.h"
#include "pixels/read_scaled.h"
#include "pixels/transfer.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"
#include "transport/image.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

bool fail(VORN_Image& image, int32_t code) {
    VORN_L_SetErrorCode(&image, code, 0);
    return false;
}

bool prepareRead(VORN_Image& image, int32_t& width, int32_t& height) {
    transferAborted() = false;
    if (!VORN_L_PrepareTransfer(&image)) {
        return abandonTransfer(image);
    }
    if (!findLong(image.imageTags, ITAG_Width, width) ||
        !findLong(image.imageTags, ITAG_Height, height)) {
        fail(image, kErrorNoSize);
        return abandonTransfer(image);
    }
    return true;
}

// The format that the module announced.
bool moduleFormat(VORN_Image& image, VORN_DataFormat& format) {
    const VORN_TagItem* item = VORN_L_TagFind(image.imageTags, ITAG_DataFormat);
    if (item == nullptr || itemDataSize(item) < sizeof format) {
        return fail(image, kErrorNoDataFormat);
    }
    std::memcpy(&format, itemData(item), sizeof format);
    return true;
}

// Every line goes from the shared area straight to its place in the application's memory.
bool readDirectly(VORN_Image& image,
                  const VORN_ImageBuffer& buffer,
                  const VORN_DataFormat& format,
                  const TransferOptions& options,
                  const VORN_ChunkyBuffer* palette) {
    VORN_ChunkyBuffer lines = correctedBuffer(image, buffer.chunky);
    const int32_t height = lines.height;
    const int32_t step = linesPerStep(options, height);
    Meter meter(image, options, height);
    for (int32_t done = 0; done < height;) {
        lines.height = std::min(step, height - done);
        const int32_t got = transferAborted()
                                ? 0
                                : VORN_L_ImageReadLineChunky(&image, &lines, &format, options.abort,
                                                             options.abortData, palette);
        if (got == 0) {
            return abandonTransfer(image);
        }
        advanceLines(lines, got);
        meter.advance(got, true);
        done += got;
    }
    VORN_L_ImageHandleEndReading(&image);  // the last block may have had more lines
    image.block = BlockPosition{};
    VORN_L_WaitForAck(&image);
    return true;
}

// The loader has been asked for its pixels.
bool readStarted(VORN_Image& image,
                 const VORN_ImageBuffer& buffer,
                 const TransferOptions& options) {
    VORN_DataFormat format;
    if (!moduleFormat(image, format)) {
        return false;
    }
    const Owned<VORN_ChunkyBuffer> palette = convertedPalette(image, buffer.chunky);
    if (!hasNeededPalette(image, palette, kErrorProtocol)) {
        return abandonTransfer(image);
    }
    const auto read = image.sizeDiffers ? readScaled : readDirectly;
    return read(image, buffer, format, options, palette.get());
}

}  // namespace
}  // namespace vorn

VORN_Bool VORN_H_ImageReadData(VORN_Image* image,
                               const VORN_ImageBuffer* buffer,
                               const VORN_Word* tags) {
    int32_t width = 0;
    int32_t height = 0;
    if (!vorn::prepareRead(*image, width, height)) {
        return 0;
    }
    if (buffer == nullptr || buffer->type != VORN_BUFFER_CHUNKY) {
        return vorn::fail(*image, vorn::kErrorArgument);
    }
    const vorn::TransferOptions options = vorn::transferOptions(tags);
    vorn::noteBufferSize(*image, buffer->chunky, width, height);
    return VORN_L_StartReadingImage(image) && vorn::readStarted(*image, *buffer, options);
}

VORN_Bool VORN_H_ImageVaReadData(VORN_Image* image, const VORN_ImageBuffer* buffer, ...) {
    va_list arguments;
    va_start(arguments, buffer);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    return words.data() != nullptr ? VORN_H_ImageReadData(image, buffer, words.data())
                                   : vorn::fail(*image, vorn::kErrorMemory);
}
