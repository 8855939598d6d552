// The pieces into which two grids of different size cut a line that they both span.
//
// Along a line of n source and m destination items, a source item is m units long and a destination
// item n units. Walking both grids together gives pieces, each of which lies in exactly one source
// and one destination item.
#pragma once

#include <cstdint>

#include "support/memory.h"

namespace vorn {

struct Piece {
    uint32_t weight;  // its share of the destination item, see PieceTable::shift
    bool endsSource;
    bool endsDestination;
};

struct PieceTable {
    Owned<Piece> pieces;  // in order
    unsigned shift = 0;   // the weights of one destination item add up to exactly 2^shift

    // False when memory is short.
    bool build(int32_t n, int32_t m);
};

}  // namespace vorn
