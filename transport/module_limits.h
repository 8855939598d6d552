// What module programs may use: as the host has said, or the standard limit of loaders.
#pragma once

#include "platform/process.h"

struct VORN_Image;

namespace vorn {

// What the handle's next module program gets.
platform::ProcessLimits limitsFor(const VORN_Image& image);

}  // namespace vorn
