// What a module says of itself in its capability file.
#pragma once

#include <vorn/library.h>

namespace vorn {

// The calling thread's last parsed file. Valid until the thread parses the next.
struct CapabilityRecord {
    int32_t alpha = 0;
    int32_t alphaAlways = 0;
    int32_t device = 0;
    int32_t animation = 0;
    char colorSpaces[PARSE_STRING_SIZE] = "";
    char sizes[PARSE_STRING_SIZE] = "";
    char extension[PARSE_STRING_SIZE] = "";
    char longModuleName[PARSE_STRING_SIZE] = "";
    char bitsPerChannel[PARSE_STRING_SIZE] = "";
};

}  // namespace vorn

// As the other accessors of <vorn/library.h>: the module always has an alpha channel.
extern "C" VORN_Bool VORN_L_AlphaAlways(void);
