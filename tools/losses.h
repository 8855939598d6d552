// What of a picture a saver can't hold, known before any of it is read.
#pragma once

#include <string>

#include "tools/conversion_plan.h"

namespace vorn::tool {

// In words, "" when all of the picture arrives. What the user has asked for is no loss.
std::string lossesOf(const ImageDescription& image,
                     const Capabilities& saver,
                     const ConversionWishes& wishes,
                     const ConversionPlan& plan);

}  // namespace vorn::tool
