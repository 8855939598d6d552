// Palette lookup of whole pixels: the entries are first laid into cells that hold all channels.
#pragma once

#include "pixels/line_routines.h"

namespace vorn {

// True when the lines suit it and it pays: 8-bit indices, up to four channels, and not more entries
// to lay out than pixels to look up.
bool suitsPaletteCells(const LineTask& task);

void lookUpCells(const LineTask& task);

}  // namespace vorn
