#include "transport/aspect.h"

#include <limits>

#include "transport/tag_exchange.h"

namespace vorn {
namespace {

constexpr int32_t kWhole = 100;  // the parts of a number are hundredths

}  // namespace

DerivedAspect deriveAspect(const VORN_TagItem* list) {
    DerivedAspect derived;
    int32_t x = 0;
    int32_t y = 0;
    const bool hasX = findLong(list, ITAG_XAspect, x);
    const bool hasParts = findLong(list, ITAG_YAspect, y) && hasX;
    const VORN_TagItem* number = VORN_L_TagFind(list, ITAG_Aspect);
    if (number && !hasParts) {
        const double hundredths = VORN_L_TagGetDoubleVal(number) * kWhole;
        derived.hasParts = hundredths >= 1 && hundredths <= std::numeric_limits<int32_t>::max();
        if (derived.hasParts) derived.x = static_cast<int32_t>(hundredths);
        derived.y = kWhole;
    } else if (hasParts && !number && y != 0) {
        derived.hasRatio = true;
        derived.ratio = static_cast<double>(x) / y;
    }
    return derived;
}

}  // namespace vorn
