// A whole picture on its way from a loader to a saver, for turns that need its last lines first.
#pragma once

#include <cstdint>

#include "tools/connection.h"
#include "tools/conversion_plan.h"
#include "tools/progress_bar.h"
#include "tools/target_size.h"

namespace vorn::tool {

// Moves the picture through memory, or, where it takes more than `mostMemory` bytes, through a
// temporary file. Both images have been opened and their tags are set; `size` is that of the
// picture that is written. Throws; the target is then as it was before.
void movePicture(Connection& loader,
                 Connection& saver,
                 const ConversionPlan& plan,
                 Size size,
                 uint64_t mostMemory,
                 ProgressBar& progress);

}  // namespace vorn::tool
