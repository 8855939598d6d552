#include "scale/area_table.h"

#include <algorithm>

namespace vorn {
namespace {

// Walks along one destination item. A weight is rounded to the nearest whole number, and what the
// rounding added or took away is made good in the next weight of the item: so the sum is exact, and
// an image of one value keeps that value.
class AreaWalk {
  public:
    AreaWalk(int32_t n, int32_t m, unsigned shift) : n_(n), m_(m), left_(m), shift_(shift) {}

    // The next span. Its weights are written from `begin` on.
    AreaSpan next(size_t begin, uint32_t* weights) {
        AreaSpan span{item_, 0, begin};
        int64_t error = 0;  // in units of 1 / n of a weight
        for (int32_t due = n_; due > 0; ++span.count) {
            const int32_t length = std::min(left_, due);
            const int64_t exact = (int64_t{length} << shift_) + error;
            const int64_t weight = (2 * exact + n_) / (2 * int64_t{n_});
            error = exact - weight * n_;
            weights[begin++] = static_cast<uint32_t>(weight);
            due -= length;
            left_ -= length;
            if (left_ == 0) ++item_, left_ = m_;
        }
        return span;
    }

  private:
    int32_t n_;
    int32_t m_;
    int32_t item_ = 0;  // the source item at hand
    int32_t left_;      // units that are left of it
    unsigned shift_;
};

}  // namespace

// The shift is the smallest that tells n source items apart.
bool AreaTable::build(int32_t n, int32_t m) {
    const auto items = static_cast<size_t>(m);
    const size_t mostWeights = static_cast<size_t>(n) + items * kAreaRun;
    spans.reset(static_cast<AreaSpan*>(AllocMemory(items * sizeof(AreaSpan), 0)));
    weights.reset(
        static_cast<uint32_t*>(AllocMemory(mostWeights * sizeof(uint32_t), MEMORY_Clear)));
    if (!spans || !weights) return false;
    shift = 0;
    while ((int64_t{1} << shift) < n) ++shift;
    AreaWalk walk(n, m, shift);
    size_t begin = 0;
    maxCount = 0;
    for (size_t i = 0; i < items; ++i) {
        const AreaSpan span = walk.next(begin, weights.get());
        spans.get()[i] = span;
        maxCount = std::max(maxCount, span.count);
        begin += static_cast<size_t>((span.count + kAreaRun - 1) / kAreaRun * kAreaRun);
    }
    return true;
}

void AreaTable::release() {
    spans.reset();
    weights.reset();
}

}  // namespace vorn
