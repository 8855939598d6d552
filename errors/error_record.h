// The error and warning pairs that a thread and an image handle keep.
#pragma once

#include <vorn/types.h>

namespace vorn {

struct CodePair {
    int32_t code = 0;
    int32_t subcode = 0;
};

struct ErrorRecord {
    CodePair error;
    CodePair warning;
};

// The record inside an image handle. Defined by the room that owns the handle.
ErrorRecord& errorRecordOf(VORN_Image& image);

}  // namespace vorn
