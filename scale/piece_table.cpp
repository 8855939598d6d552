#include "scale/piece_table.h"

#include <algorithm>

namespace vorn {

// The shift is the smallest that tells n source items apart. A weight is rounded to the nearest
// whole number, and what the rounding added or took away is made good in the next piece of the same
// destination item: so the sum is exact, and an image of one value keeps that value.
bool PieceTable::build(int32_t n, int32_t m) {
    const size_t most = static_cast<size_t>(n) + static_cast<size_t>(m);
    pieces.reset(static_cast<Piece*>(AllocMemory(most * sizeof(Piece), 0)));
    if (!pieces) return false;
    shift = 0;
    while ((int64_t{1} << shift) < n) ++shift;

    Piece* next = pieces.get();
    int32_t sourceLeft = m;
    int32_t destinationLeft = n;
    int64_t error = 0;  // in units of 1 / n of a weight
    for (int32_t done = 0; done < m; ++next) {
        const int32_t length = std::min(sourceLeft, destinationLeft);
        const int64_t exact = (int64_t{length} << shift) + error;
        const int64_t weight = (2 * exact + n) / (2 * int64_t{n});
        error = exact - weight * n;
        sourceLeft -= length;
        destinationLeft -= length;
        *next = {static_cast<uint32_t>(weight), sourceLeft == 0, destinationLeft == 0};
        if (sourceLeft == 0) sourceLeft = m;
        if (destinationLeft == 0) destinationLeft = n, ++done;
    }
    return true;
}

}  // namespace vorn
