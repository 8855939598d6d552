// The same work on lines done by other libraries, for comparison.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vorn_bench {

enum class Work {
    Straight,  // RGB to RGB
    AddAlpha,  // RGB to RGBA
    Swap,      // RGB to BGR
    Split,     // RGB to planes
    Merge,     // planes to RGB
    Widen,     // RGB of 8 bits to 16
    Narrow,    // RGB of 16 bits to 8
    Gray,      // RGB to grey
    ToYuv,     // planes to planes
    FromYuv,   // planes to planes
    RgbToYuv,  // RGB to planes
    YuvToRgb,  // planes to RGB
    Palette,   // indices to RGB
};

// One line of pixels; both sides have room for eight bytes a pixel and begin at multiples of 64.
// A plane begins at the first multiple of 64 behind the one before.
struct LineMemory {
    const uint8_t* from;
    uint8_t* to;
    const uint8_t* palette;  // 256 entries: three planes
    int32_t width;

    int32_t plane() const { return (width + 63) / 64 * 64; }
};

struct LinePeer {
    std::string name;
    std::function<void()> work;
};

// The peers that can do this; where they round otherwise or weigh colours otherwise, their samples
// differ from ours.
std::vector<LinePeer> linePeers(Work work, const LineMemory& memory);

}  // namespace vorn_bench
