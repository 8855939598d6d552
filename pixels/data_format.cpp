#include "pixels/data_format.h"

#include <vorn/library.h>

namespace {

using vorn::StandardLayout;

// The wire record: these offsets are the same bytes in every program that takes part.
static_assert(offsetof(VORN_DataFormat, layout) == 0);
static_assert(offsetof(VORN_DataFormat, width) == 4);
static_assert(offsetof(VORN_DataFormat, height) == 8);
static_assert(offsetof(VORN_DataFormat, channels) == 12);
static_assert(offsetof(VORN_DataFormat, bytesPerChannel) == 16);
static_assert(offsetof(VORN_DataFormat, flags) == 20);
static_assert(offsetof(VORN_DataFormat, pixelStep) == 24);
static_assert(offsetof(VORN_DataFormat, lineStep) == 56);
static_assert(offsetof(VORN_DataFormat, channelPlace) == 88);
static_assert(offsetof(VORN_DataFormat, bitsPerChannel) == 120);
static_assert(sizeof(VORN_DataFormat) == 128);

// The chunky buffer has the same shape; only its places grow with the pointer.
constexpr bool kNarrowPointers = sizeof(void*) == 4;
static_assert(offsetof(VORN_ChunkyBuffer, layout) == 0);
static_assert(offsetof(VORN_ChunkyBuffer, width) == 4);
static_assert(offsetof(VORN_ChunkyBuffer, height) == 8);
static_assert(offsetof(VORN_ChunkyBuffer, channels) == 12);
static_assert(offsetof(VORN_ChunkyBuffer, bytesPerChannel) == 16);
static_assert(offsetof(VORN_ChunkyBuffer, flags) == 20);
static_assert(offsetof(VORN_ChunkyBuffer, pixelStep) == 24);
static_assert(offsetof(VORN_ChunkyBuffer, lineStep) == 56);
static_assert(offsetof(VORN_ChunkyBuffer, channelPlace) == 88);
static_assert(!kNarrowPointers || offsetof(VORN_ChunkyBuffer, bitsPerChannel) == 120);
static_assert(!kNarrowPointers || sizeof(VORN_ChunkyBuffer) == 128);

constexpr StandardLayout kStandardLayouts[] = {{1, 1}, {1, 4}, {1, 3}, {2, 1}, {2, 4}, {2, 3}};

// Places behind a base. An absent base (a null address) has no channels behind it.
uint32_t placeBehind(uint32_t base, int64_t distance) {
    return base + static_cast<uint32_t>(distance);
}
uint8_t* placeBehind(uint8_t* base, int64_t distance) {
    return base == nullptr ? nullptr : base + static_cast<ptrdiff_t>(distance);
}

// 64-bit products: the sizes of a record that nobody has checked yet may be anything.
template <class Record>
void setUpLayout(Record& record) {
    const int32_t channels = vorn::usedChannels(record);
    const StandardLayout* layout = vorn::standardLayout(record.layout);
    for (int32_t c = 0; c < channels; c++) {
        if (layout != nullptr) {
            const int64_t size = layout->bytesPerChannel;
            const int64_t run = record.width * size;
            const bool chunky = layout->cell > 1;
            record.bytesPerChannel = layout->bytesPerChannel;
            record.pixelStep[c] = static_cast<int32_t>(size * layout->cell);
            record.lineStep[c] =
                static_cast<int32_t>(run * (chunky ? layout->cell : record.channels));
            record.channelPlace[c] = placeBehind(record.channelPlace[0], (chunky ? size : run) * c);
        }
        if (record.bitsPerChannel[c] == 0) {
            record.bitsPerChannel[c] = static_cast<uint8_t>(int64_t{8} * record.bytesPerChannel);
        }
    }
}

}  // namespace

namespace vorn {

const StandardLayout* standardLayout(int32_t code) {
    return code >= DF_LineInterleaved8 && code <= DF_Chunky3x16 ? &kStandardLayouts[code - 1]
                                                                : nullptr;
}

VORN_ChunkyBuffer bufferAt(const VORN_DataFormat& format, const void* base) {
    VORN_ChunkyBuffer buffer{};
    buffer.width = format.width;
    buffer.height = format.height;
    buffer.channels = format.channels;
    buffer.bytesPerChannel = format.bytesPerChannel;
    buffer.flags = format.flags;
    auto* bytes = static_cast<uint8_t*>(const_cast<void*>(base));
    for (int32_t c = 0; c < usedChannels(format); c++) {
        buffer.pixelStep[c] = format.pixelStep[c];
        buffer.lineStep[c] = format.lineStep[c];
        buffer.channelPlace[c] = bytes + format.channelPlace[c];
    }
    return buffer;
}

bool linesInside(const VORN_DataFormat& format, int32_t lines, uint64_t bytes) {
    VORN_DataFormat block = format;
    block.height = 1;
    if (!hasValidSizes(block) || lines < 0) {
        return false;
    }
    if (lines == 0) {
        return true;
    }
    // Below 2^62 + 2^47 each: no sum can overflow.
    for (int32_t c = 0; c < format.channels; c++) {
        const int64_t down = int64_t{format.lineStep[c]} * (lines - 1);
        const int64_t along = int64_t{format.pixelStep[c]} * (format.width - 1);
        const int64_t first = format.channelPlace[c];
        const int64_t lowest = first + std::min<int64_t>(down, 0) + std::min<int64_t>(along, 0);
        const int64_t end = first + std::max<int64_t>(down, 0) + std::max<int64_t>(along, 0) +
                            format.bytesPerChannel;
        if (lowest < 0 || static_cast<uint64_t>(end) > bytes) {
            return false;
        }
    }
    return true;
}

}  // namespace vorn

int32_t VORN_L_ColorSpaceChannels(int32_t colorSpace) {
    constexpr int32_t kChannels[] = {0, 1, 3, 3, 3, 3, 4, 1};
    return colorSpace >= VORN_CS_NONE && colorSpace <= VORN_CS_CMAPPED ? kChannels[colorSpace] : 0;
}

void VORN_L_DataFormatMacroSetup(VORN_DataFormat* format) { setUpLayout(*format); }

void VORN_L_ChunkyBufferMacroSetup(VORN_ChunkyBuffer* buffer) { setUpLayout(*buffer); }

VORN_Bool VORN_L_CheckDataFormat(const VORN_DataFormat* format) {
    return vorn::hasValidSizes(*format);
}

void VORN_L_InitChunkyBufferFromDataFormat(VORN_ChunkyBuffer* buffer,
                                           const VORN_DataFormat* format) {
    vorn::copyHeader(*buffer, *format);
}
