// Which source items each destination item of an averaged line covers, and how much of each.
//
// Along a line of n source and m destination items, a source item is m units long and a destination
// item n units: both grids span the same line. The weight of a source item is its share of the
// destination item in units of 2^-shift.
#pragma once

#include <cstddef>
#include <cstdint>

#include "support/memory.h"

namespace vorn {

struct AreaSpan {
    int32_t first;   // the first source item covered
    int32_t count;   // how many; the last of one span may be the first of the next
    size_t weights;  // where their weights begin; zeros follow, up to whole runs
};

inline constexpr int32_t kAreaRun = 4;

struct AreaTable {
    Owned<AreaSpan> spans;    // one for each destination item
    Owned<uint32_t> weights;  // of all spans, in order; those of a span add up to exactly 2^shift
    unsigned shift = 0;
    int32_t maxCount = 0;

    // False when memory is short.
    bool build(int32_t n, int32_t m);
    void release();
};

}  // namespace vorn
