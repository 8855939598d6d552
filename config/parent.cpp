// Which side of the protocol the calling thread is on.
#include <vorn/module.h>

__thread int32_t VORN_a_Parent = 1;

int32_t VORN_M_GetParent(void) { return VORN_a_Parent; }
