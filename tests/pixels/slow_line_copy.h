// The line copy said once more, sample by sample and without any thought of speed.
#pragma once

#include "tests/pixels/picture.h"

namespace vorn::test {

void slowLineCopy(const Picture& source,
                  Picture& destination,
                  int sourceLine,
                  int destinationLine,
                  int code,
                  const Picture* palette);

}  // namespace vorn::test
