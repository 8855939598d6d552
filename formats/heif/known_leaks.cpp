// For builds that look for lost memory: x265 loses about a kilobyte with every picture.
#include <vorn/types.h>

extern "C" VORN_API const char* __lsan_default_suppressions();
extern "C" VORN_API const char* __lsan_default_suppressions() { return "leak:libx265"; }
