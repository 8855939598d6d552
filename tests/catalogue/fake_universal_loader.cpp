// A universal loader that names a loader after the file.
#include <vorn/types.h>

#include <cstdio>

extern "C" VORN_API VORN_Bool VORN_M_UniversalLoader(const char* fileName,
                                                     char* answer,
                                                     int32_t /*options*/) {
    std::snprintf(answer, 4096, "loader-of-%s\n", fileName);
    return 1;
}
