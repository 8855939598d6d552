// Lines out of the module's data blocks. A block stays in the shared area until its last line is
// taken; one call may span several blocks, and a block several calls.
#include <vorn/library.h>

#include "errors/error_numbers.h"
#include "pixels/data_format.h"
#include "pixels/transfer.h"
#include "transport/image.h"
#include "transport/message.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

bool fail(VORN_Image& image, int32_t code) {
    VORN_L_SetErrorCode(&image, code, 0);
    return false;
}

// False when the message says that the module has stopped.
bool goesOn(VORN_Image& image, const VORN_TagItem* message) {
    int32_t terminate = 0;
    if (findLong(message, MTAG_Terminate, terminate)) {
        VORN_L_HandleAckMsg(&image, message);
        if (terminate != 0) {
            return fail(image, kErrorModuleStopped);
        }
    }
    if (VORN_L_HandleErrorCode(&image, message)) {
        VORN_L_HandleAckMsg(&image, message);
        return false;
    }
    return !VORN_L_HandleAckMsg(&image, message) || fail(image, kErrorProtocol);
}

// Takes the block of a message that is held, after checking that its lines really are where the
// module's format says.
bool takeBlock(VORN_Image& image, const Message& message, const VORN_DataFormat& format) {
    BlockPosition block;
    if (!findLong(message.list, ITAG_ReadWidth, block.width) ||
        !findLong(message.list, ITAG_ReadHeight, block.linesLeft) || message.data == nullptr ||
        !linesInside(format, block.linesLeft, message.dataSize)) {
        return fail(image, kErrorProtocol);
    }
    if (block.linesLeft == 0) {
        return fail(image, kErrorEndOfFile);
    }
    block.data = message.data;
    image.block = block;
    return true;
}

// On failure no block is held.
bool fetchBlock(VORN_Image& image, const VORN_DataFormat& format) {
    Message message;
    if (!receiveMessage(image, message)) {
        return false;
    }
    if (goesOn(image, message.list) && takeBlock(image, message, format)) {
        return true;
    }
    VORN_L_ImageHandleEndReading(&image);
    return false;
}

void takeLine(VORN_Image& image) {
    image.block.line++;
    image.block.linesLeft--;
    if (image.block.linesLeft == 0) {
        VORN_L_ImageHandleEndReading(&image);
    }
}

}  // namespace
}  // namespace vorn

int32_t VORN_L_ImageReadLineChunky(VORN_Image* image,
                                   const VORN_ChunkyBuffer* buffer,
                                   const VORN_DataFormat* format,
                                   VORN_AbortCallback abort,
                                   VORN_Word abortData,
                                   const VORN_ChunkyBuffer* palette) {
    // The buffer's width is what a line copy counts: no line may be asked for more than it has.
    if (buffer->width > format->width) {
        vorn::fail(*image, vorn::kErrorProtocol);
        return 0;
    }
    for (int32_t i = 0; i < buffer->height; i++) {
        if (image->block.linesLeft == 0) {
            if (vorn::askAbort(*image, abort, abortData)) {
                return 0;
            }
            if (!vorn::fetchBlock(*image, *format)) {
                return 0;
            }
        }
        VORN_L_CopyDataFormatToChunkyBuffer(format, image->block.data, buffer, image->block.line, i,
                                            image->colorConversion, palette);
        vorn::takeLine(*image);
    }
    return buffer->height;
}
