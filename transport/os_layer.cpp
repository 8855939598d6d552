#include "transport/os_layer.h"

#include <vorn/support.h>

namespace vorn {

const OsLayer& osLayer() { return OSEqualWin162() ? kGlobalBlocks : kKernelObjects; }

}  // namespace vorn
