#include "pixels/transfer.h"

#include <vorn/library.h>

#include <algorithm>

#include "errors/error_numbers.h"
#include "pixels/line_view.h"
#include "support/thread_state.h"
#include "transport/image.h"

namespace vorn {
namespace {

constexpr VORN_Word kDefaultTicks = 16;

struct TransferState {
    bool aborted = false;
};

VORN_Word option(const VORN_Word* tags, uint32_t id, VORN_Word defaultValue) {
    VORN_Word value = defaultValue;
    if (tags != nullptr) {
        VORN_L_FindAPILongTag(tags, id, &value, defaultValue);
    }
    return value;
}

}  // namespace

TransferOptions transferOptions(const VORN_Word* tags) {
    TransferOptions options;
    options.meter = reinterpret_cast<VORN_MeterCallback>(option(tags, ITAG_MeterCallback, 0));
    options.meterData = option(tags, ITAG_MeterCallbackUserData, 0);
    options.abort = reinterpret_cast<VORN_AbortCallback>(option(tags, ITAG_AbortCallback, 0));
    options.abortData = option(tags, ITAG_AbortCallbackUserData, 0);
    options.ticks = std::max(static_cast<int32_t>(option(tags, ITAG_MeterTicks, kDefaultTicks)), 1);
    return options;
}

bool& transferAborted() { return threadState<TransferState>().aborted; }

bool askAbort(VORN_Image& image, VORN_AbortCallback abort, VORN_Word abortData) {
    const bool wanted = abort != nullptr && abort(&image, abortData) != 0;
    if (wanted) {
        transferAborted() = true;
    }
    return wanted;
}

int32_t linesPerStep(const TransferOptions& options, int32_t height) {
    if (options.meter == nullptr) {
        return height;
    }
    return std::max(static_cast<int32_t>(height / (int64_t{2} * options.ticks)), 1);
}

void Meter::advance(int32_t lines, bool mayAbort) {
    if (options_.meter == nullptr) {
        return;
    }
    sum_ += int64_t{options_.ticks} * lines;
    while (sum_ >= lines_) {
        sum_ -= lines_;
        options_.meter(&image_, options_.meterData, ++count_);
        if (mayAbort) {
            askAbort(image_, options_.abort, options_.abortData);
        }
    }
}

bool noteBufferSize(VORN_Image& image,
                    const VORN_ChunkyBuffer& buffer,
                    int32_t width,
                    int32_t height) {
    image.outputWidth = image.axesSwapped ? buffer.height : buffer.width;
    image.outputHeight = image.axesSwapped ? buffer.width : buffer.height;
    image.sizeDiffers = image.outputWidth != width || image.outputHeight != height;
    return image.sizeDiffers;
}

VORN_ChunkyBuffer correctedBuffer(const VORN_Image& image, const VORN_ChunkyBuffer& buffer) {
    VORN_ChunkyBuffer corrected = buffer;
    if (image.orientation != nullptr) {
        image.orientation(corrected);
    }
    return corrected;
}

void advanceLines(VORN_ChunkyBuffer& buffer, int32_t lines) {
    for (int32_t c = 0; c < VORN_MAX_CHANNELS; c++) {
        if (isPresent(buffer, c)) {
            buffer.channelPlace[c] += ptrdiff_t{buffer.lineStep[c]} * lines;
        }
    }
}

bool abandonTransfer(VORN_Image& image) {
    const CodePair error = transferAborted() ? CodePair{kErrorAborted, 0} : image.errors.error;
    VORN_L_ImageHandleEndReading(&image);
    image.block = BlockPosition{};
    VORN_L_SendCMDAbort(&image);
    VORN_L_WaitForAck(&image);
    if (error.code != 0) {
        VORN_L_SetErrorCode(&image, error.code, error.subcode);
    }
    return false;
}

}  // namespace vorn
