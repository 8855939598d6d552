#include "pixels/read_scaled.h"

#include <vorn/library.h>
#include <vorn/scaler.h>

#include <algorithm>
#include <memory>

#include "errors/error_numbers.h"
#include "support/memory.h"
#include "tags/tag_walk.h"
#include "transport/image.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

constexpr int32_t kBandBytes = 65536;

struct ScalerDeleter {
    void operator()(VORN_Scaler* scaler) const { VORN_S_FreeScaler(scaler); }
};
using OwnedScaler = std::unique_ptr<VORN_Scaler, ScalerDeleter>;

bool fail(VORN_Image& image, int32_t code) {
    VORN_L_SetErrorCode(&image, code, 0);
    return false;
}

// Palette indices can be copied, not mixed.
bool keepsIndices(const VORN_Image& image) {
    int32_t colorSpace = 0;
    return image.colorConversion == 0 && findLong(image.imageTags, ITAG_ColorSpace, colorSpace) &&
           colorSpace == VORN_CS_CMAPPED;
}

// The host's wish, or the best method.
OwnedScaler chooseScaler(const VORN_Image& image,
                         int32_t width,
                         int32_t height,
                         const VORN_ChunkyBuffer& target) {
    const VORN_TagItem* wish = VORN_L_TagFind(image.sideTags, ITAG_ScalerName);
    if (!wish && keepsIndices(image)) return OwnedScaler(VORN_S_AllocScaler("fastest"));
    if (!wish)
        return OwnedScaler(
            VORN_S_AllocScaler(VORN_S_ChooseScaler(width, height, target.width, target.height)));
    const Owned<char> name(VORN_L_TagGetString(wish));
    return OwnedScaler(name ? VORN_S_AllocScaler(name.get()) : nullptr);
}

// Lines of the module's picture in the host's samples, one channel's run after the other within a
// line.
VORN_ChunkyBuffer bandBuffer(const VORN_ChunkyBuffer& host,
                             int32_t width,
                             int32_t height,
                             uint8_t* bytes) {
    VORN_ChunkyBuffer band{};
    band.width = width;
    band.channels = std::clamp(host.channels, 1, int32_t{VORN_MAX_CHANNELS});
    band.bytesPerChannel = host.bytesPerChannel == 2 ? 2 : 1;
    const int32_t run = width * band.bytesPerChannel;
    const int32_t line = run * band.channels;
    band.height = std::min(kBandBytes / line, height);
    for (int32_t c = 0; c < band.channels; ++c) {
        band.pixelStep[c] = band.bytesPerChannel;
        band.lineStep[c] = line;
        band.channelPlace[c] = bytes + ptrdiff_t{run} * c;
        band.bitsPerChannel[c] = host.bitsPerChannel[c];
    }
    return band;
}

// What the scaler calls after each line of the target.
struct LineProgress {
    VORN_Image* image;
    const TransferOptions* options;
    Meter meter;

    static int32_t lineDone(void* data) {
        auto& progress = *static_cast<LineProgress*>(data);
        progress.meter.advance(1, false);
        return askAbort(*progress.image, progress.options->abort, progress.options->abortData);
    }
};

// Fills the band with the next lines of the picture.
bool fillBand(VORN_Image& image,
              VORN_ChunkyBuffer& band,
              const VORN_DataFormat& format,
              const TransferOptions& options,
              const VORN_ChunkyBuffer* palette,
              int32_t left) {
    band.height = std::min(band.height, left);
    if (transferAborted()) return false;
    return VORN_L_ImageReadLineChunky(&image, &band, &format, options.abort, options.abortData,
                                      palette) > 0;
}

bool scale(VORN_Image& image,
           VORN_Scaler* scaler,
           VORN_ChunkyBuffer& band,
           const VORN_DataFormat& format,
           const TransferOptions& options,
           const VORN_ChunkyBuffer* palette) {
    int32_t linesRead = 0;
    for (;;) {
        switch (VORN_S_SendData(scaler)) {
            case VORN_S_FILL_SOURCE:
                if (!fillBand(image, band, format, options, palette, format.height - linesRead))
                    return false;
                linesRead += band.height;
                break;
            case VORN_S_TAKE_DESTINATION:
                break;  // the host's own memory keeps the lines
            case VORN_S_FINISHED:
                return true;
            case VORN_S_STOPPED:
                return fail(image, kErrorAborted);
            default:
                return fail(image, kErrorMemory);
        }
    }
}

}  // namespace

bool readScaled(VORN_Image& image,
                const VORN_ImageBuffer& buffer,
                const VORN_DataFormat& format,
                const TransferOptions& options,
                const VORN_ChunkyBuffer* palette) {
    const VORN_ChunkyBuffer target = correctedBuffer(image, buffer.chunky);
    const Owned<uint8_t> bytes(static_cast<uint8_t*>(AllocMemory(kBandBytes, 0)));
    if (!bytes) {
        fail(image, kErrorMemory);
        return abandonTransfer(image);
    }
    VORN_ChunkyBuffer band = bandBuffer(buffer.chunky, format.width, format.height, bytes.get());
    if (band.height < 1) {
        fail(image, kErrorTooLarge);
        return abandonTransfer(image);
    }
    const OwnedScaler scaler = chooseScaler(image, format.width, format.height, target);
    LineProgress progress{&image, &options, Meter(image, options, target.height)};
    if (!scaler || VORN_S_InitScale(scaler.get(), format.height, target.height, &band, &target,
                                    LineProgress::lineDone, &progress) != VORN_S_READY) {
        fail(image, kErrorMemory);
        return abandonTransfer(image);
    }
    if (!scale(image, scaler.get(), band, format, options, palette)) return abandonTransfer(image);
    VORN_L_ImageHandleEndReading(&image);  // the last block may have had more lines
    image.block = BlockPosition{};
    return VORN_L_WaitForAck(&image);
}

}  // namespace vorn
