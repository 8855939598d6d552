#include "tools/pixel_layout.h"

#include <cstring>

namespace vorn::tool {

uint64_t bytesOf(const ConversionPlan& plan, Size size) {
    return static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height) *
           static_cast<uint64_t>(plan.channels() * plan.bytesPerChannel);
}

VORN_ChunkyBuffer pixelLayout(const ConversionPlan& plan, Size size) {
    VORN_ChunkyBuffer buffer{};
    buffer.width = size.width;
    buffer.height = size.height;
    buffer.channels = plan.channels();
    buffer.bytesPerChannel = plan.bytesPerChannel;
    buffer.flags = plan.channels() > plan.colorChannels ? uint32_t{VORN_DF_ALPHA} : 0;
    const int32_t pixelStep = plan.channels() * plan.bytesPerChannel;
    for (int32_t c = 0; c < buffer.channels; ++c) {
        buffer.pixelStep[c] = pixelStep;
        buffer.lineStep[c] = size.width * pixelStep;
        buffer.bitsPerChannel[c] = static_cast<uint8_t>(8 * plan.bytesPerChannel);
    }
    return buffer;
}

VORN_ChunkyBuffer pixelsAt(uint8_t* place, const ConversionPlan& plan, Size size) {
    VORN_ChunkyBuffer buffer = pixelLayout(plan, size);
    for (int32_t c = 0; c < buffer.channels; ++c) {
        buffer.channelPlace[c] = place + c * plan.bytesPerChannel;
    }
    return buffer;
}

VORN_ChunkyBuffer loadedPart(VORN_ChunkyBuffer buffer, const ConversionPlan& plan) {
    if (plan.addAlpha) {
        --buffer.channels;
        buffer.flags = 0;
    }
    return buffer;
}

VORN_ChunkyBuffer mirrored(VORN_ChunkyBuffer buffer) {
    for (int32_t c = 0; c < buffer.channels; ++c) {
        buffer.channelPlace[c] += ptrdiff_t{buffer.pixelStep[c]} * (buffer.width - 1);
        buffer.pixelStep[c] = -buffer.pixelStep[c];
    }
    return buffer;
}

void prefill(uint8_t* place, size_t bytes, const ConversionPlan& plan) {
    if (plan.addAlpha) {
        std::memset(place, 0xFF, bytes);
    }
}

}  // namespace vorn::tool
