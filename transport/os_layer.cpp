#include "transport/os_layer.h"

namespace vorn {

// A system without kernel objects would get its own implementation here, by OSEqualWin162.
const OsLayer& osLayer() { return kKernelObjects; }

}  // namespace vorn
