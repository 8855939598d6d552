// The two ways of telling a pixel aspect: x and y parts, and one number. Where one is missing it
// follows from the other.
#pragma once

#include <vorn/library.h>

namespace vorn {

struct DerivedAspect {
    bool hasParts = false;  // x and y follow from the number
    int32_t x = 0;
    int32_t y = 0;
    bool hasRatio = false;  // the number follows from x and y
    double ratio = 0;
};

DerivedAspect deriveAspect(const VORN_TagItem* list);

}  // namespace vorn
