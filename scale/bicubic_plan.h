// Which source items make each destination item of the cubic filter, and with what weights.
#pragma once

#include <cstddef>
#include <cstdint>

#include "support/memory.h"

namespace vorn {

struct Contribution {
    int32_t first;   // the first source item
    int32_t count;   // how many; their weights add up to exactly kBicubicUnit
    size_t weights;  // where they begin in the plan's weights; zeros follow, up to whole runs
};

inline constexpr int32_t kBicubicUnit = 16384;
inline constexpr int32_t kWeightRun = 4;

struct BicubicPlan {
    Owned<Contribution> contributions;  // one for each destination item
    Owned<int32_t> firsts;              // their first source items once more, side by side
    Owned<int16_t> weights;
    int32_t maxCount = 0;
    int32_t inSize = 0;
    int32_t outSize = 0;

    // `blur` is the filter's blur factor, 0 to 256. False when memory is short.
    bool build(int32_t in, int32_t out, double blur);
    void release();

  private:
    struct Filter;
    size_t placeContributions(const Filter& filter);
    bool fillWeights(const Filter& filter);
};

// The blur factor that the environment asks for, see vorn/scaler.h.
double bicubicBlur();

// What a text says: 1 when it is null or no number.
double parseBlur(const char* text);

}  // namespace vorn
