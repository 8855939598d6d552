// A picture from a loader to a saver, a few lines at a time: memory grows with its width alone.
#pragma once

#include <string>

#include "tools/connection.h"
#include "tools/conversion_plan.h"
#include "tools/progress_bar.h"
#include "tools/target_size.h"

namespace vorn::tool {

struct StreamPlan {
    ConversionPlan pixels;
    Size size;              // of the picture that is written
    bool mirrored = false;  // each line from right to left
    std::string scaler;     // the user's choice; empty: what suits the sizes best
};

// Both images have been opened and their tags are set. Throws; the target is then as it was before.
void streamPicture(Connection& loader,
                   Connection& saver,
                   const StreamPlan& plan,
                   ProgressBar& progress);

}  // namespace vorn::tool
