#include "scale/area_table.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace vorn {
namespace {

// The spans cover every source item, overlap by one at most, and their weights have one sum.
void checkTable(int32_t n, int32_t m) {
    AreaTable table;
    ASSERT_TRUE(table.build(n, m));
    int32_t end = 0;
    for (int32_t i = 0; i < m; ++i) {
        const AreaSpan& span = table.spans.get()[i];
        ASSERT_TRUE(span.first == end || span.first == end - 1) << n << " to " << m;
        end = span.first + span.count;
        const uint32_t* weight = table.weights.get() + span.weights;
        ASSERT_EQ(uint64_t{1} << table.shift,
                  std::accumulate(weight, weight + span.count, uint64_t{0}))
            << n << " to " << m << " item " << i;
    }
    ASSERT_EQ(n, end) << n << " to " << m;
}

TEST(AreaTable, WeightsOfEachItemAddUpExactly) {
    for (int32_t n = 1; n <= 70; ++n) {
        for (int32_t m = 1; m <= 70; ++m) checkTable(n, m);
    }
    for (const int32_t n : {1, 2, 1000, 32768, 32769, 65521, 65535, 65536}) {
        for (const int32_t m : {1, 100, 4001, 65535, 65536}) checkTable(n, m);
    }
}

}  // namespace
}  // namespace vorn
