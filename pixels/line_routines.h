// One routine per conversion of a line.
#pragma once

#include <vorn/types.h>

namespace vorn {

// A line to copy, from one buffer to the other. The destination's width counts; nothing is read
// from or written to an absent channel.
struct LineTask {
    const VORN_ChunkyBuffer& source;
    const VORN_ChunkyBuffer& destination;
    int32_t sourceLine;
    int32_t destinationLine;
    uint32_t sizeFlags;                // see line_kernels.h
    const VORN_ChunkyBuffer* palette;  // null: none
};

// With `query` set a routine only answers which conversion code really suits the two buffers: its
// own, or 0. Otherwise it converts its leading channels and answers its own code.
using LineRoutine = uint32_t (*)(const LineTask& task, bool query);

// A row of the conversion table. Counts are the leading channels that the routine takes and makes.
struct LineConversion {
    static constexpr int32_t kAll = -1;
    LineRoutine routine;
    int32_t sourceChannels;
    int32_t destinationChannels;
};

inline constexpr uint32_t kConversionCopy = 0;
inline constexpr uint32_t kConversionPalette = 7;

// The row of a conversion code; a number that is none is a plain copy.
const LineConversion& lineConversion(uint32_t code);

// Copies channels one to one, beginning with the given ones on either side.
void copyChannels(const LineTask& task, int32_t firstSource, int32_t firstDestination);

}  // namespace vorn
