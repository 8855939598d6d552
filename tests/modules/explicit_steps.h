// Data formats with explicit steps: the ways in which a module may lay out a block of lines that no
// layout code names.
#pragma once

#include <vorn/types.h>

#include <cstdint>
#include <string>

inline constexpr const char* kExplicitForms[] = {"cells",      "runs",    "planes",    "mirrored",
                                                 "upsidedown", "columns", "backwards", "gaps"};

// Fills in steps and places for a block of up to `lines` lines, by the name of the form, and
// answers the bytes that such a block takes. Blocks with fewer lines take as much.
inline int32_t setExplicitSteps(VORN_DataFormat& format, const std::string& form, int32_t lines) {
    const int32_t size = format.bytesPerChannel;
    const int32_t cell = format.channels * size;
    const int32_t line = format.width * cell;
    for (int32_t c = 0; c < format.channels; ++c) {
        int32_t& pixelStep = format.pixelStep[c];
        int32_t& lineStep = format.lineStep[c];
        int32_t place = c * size;
        pixelStep = cell;
        lineStep = line;
        if (form == "runs") {  // each line holds a run of every channel
            pixelStep = size;
            place = c * format.width * size;
        } else if (form == "planes") {  // each block does
            pixelStep = size;
            lineStep = format.width * size;
            place = c * lines * lineStep;
        } else if (form == "mirrored") {
            pixelStep = -cell;
            place += (format.width - 1) * cell;
        } else if (form == "upsidedown") {
            lineStep = -line;
            place += (lines - 1) * line;
        } else if (form == "columns") {  // a pixel's neighbour in memory is the one below
            pixelStep = lines * cell;
            lineStep = cell;
        } else if (form == "backwards") {  // channels, pixels and lines in reverse
            pixelStep = -cell;
            lineStep = -line;
            place = lines * line - (c + 1) * size;
        } else if (form == "gaps") {
            pixelStep = cell + 1;
            lineStep = format.width * pixelStep + 3;
            place += 1;
        }
        format.channelPlace[c] = static_cast<uint32_t>(place);
    }
    const int32_t stride = form == "gaps" ? format.lineStep[0] + 1 : line;
    return lines * stride;
}
