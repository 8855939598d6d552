#include <vorn/host.h>

VORN_Bool OSEqualChicago(void) { return OSEqualChicago2(); }

VORN_Bool OSEqualNT(void) { return OSEqualNT2(); }
