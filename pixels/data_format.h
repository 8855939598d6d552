// What a data format (places are offsets) and a chunky buffer (places are addresses) have in
// common: templates over the two records, and the checks and names around them.
#pragma once

#include <vorn/types.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vorn {

// Channels that a record of unknown origin may really be asked about.
template <class Record>
int32_t usedChannels(const Record& record) {
    return std::clamp(record.channels, 0, int32_t{VORN_MAX_CHANNELS});
}

template <class Record>
bool hasValidSizes(const Record& record) {
    return record.width >= 1 && record.width <= VORN_MAX_SIZE && record.height >= 1 &&
           record.height <= VORN_MAX_SIZE && record.channels >= 1 &&
           record.channels <= VORN_MAX_CHANNELS && record.bytesPerChannel >= 1 &&
           record.bytesPerChannel <= 2;
}

// Everything but steps and places.
template <class To, class From>
void copyHeader(To& to, const From& from) {
    to.layout = from.layout;
    to.width = from.width;
    to.height = from.height;
    to.channels = from.channels;
    to.bytesPerChannel = from.bytesPerChannel;
    to.flags = from.flags;
    std::copy_n(from.bitsPerChannel, usedChannels(from), to.bitsPerChannel);
}

// The standard layouts (codes 1 to 6).
struct StandardLayout {
    int32_t bytesPerChannel;
    int32_t cell;  // samples of a pixel that lie side by side; 1: each channel has its own run
};

// Null for a code that names none: steps and places are then given explicitly.
const StandardLayout* standardLayout(int32_t code);

// The code of the line-interleaved layout with samples of that size.
constexpr int32_t lineInterleavedLayout(int32_t bytesPerChannel) {
    return bytesPerChannel < 2 ? DF_LineInterleaved8 : DF_LineInterleaved16;
}

// The record of pixels that lie at `base` as the format says. The base of a source is not written
// to.
VORN_ChunkyBuffer bufferAt(const VORN_DataFormat& format, const void* base);

// True when `lines` lines of the format lie inside a block of that many bytes, by the format's own
// steps and places. What another program announced is asked this before any of its bytes are
// touched; a format that VORN_L_CheckDataFormat refuses is refused here too.
bool linesInside(const VORN_DataFormat& format, int32_t lines, uint64_t bytes);

}  // namespace vorn
