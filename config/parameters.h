// The name under which the calling thread's settings are kept.
#pragma once

namespace vorn {

// What VORN_H_RegisterAppName was told last; "" for nothing. Valid until it is told something else.
const char* applicationName();

}  // namespace vorn
