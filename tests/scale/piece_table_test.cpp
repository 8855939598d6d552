#include "scale/piece_table.h"

#include <gtest/gtest.h>

#include <vector>

namespace vorn {
namespace {

std::vector<uint32_t> weightsOf(int32_t n, int32_t m) {
    PieceTable table;
    EXPECT_TRUE(table.build(n, m));
    std::vector<uint32_t> weights;
    for (int32_t done = 0; done < m;) {
        const Piece& piece = table.pieces.get()[weights.size()];
        weights.push_back(piece.weight);
        done += piece.endsDestination;
    }
    return weights;
}

TEST(PieceTable, CutsAtTheItemsOfBothGrids) {
    EXPECT_EQ((std::vector<uint32_t>{3, 1, 1, 3}), weightsOf(3, 2));
    EXPECT_EQ((std::vector<uint32_t>{2, 1, 1, 2}), weightsOf(2, 3));
    EXPECT_EQ((std::vector<uint32_t>{1, 1, 1, 1}), weightsOf(4, 1));
    EXPECT_EQ((std::vector<uint32_t>{4, 4, 4}), weightsOf(3, 3));
}

// The pieces end every source item once, and every destination item's weights have the same sum.
void checkTable(int32_t n, int32_t m) {
    PieceTable table;
    ASSERT_TRUE(table.build(n, m));
    const Piece* piece = table.pieces.get();
    int32_t sourceItems = 0;
    for (int32_t done = 0; done < m; ++done) {
        uint64_t sum = 0;
        for (bool last = false; !last; ++piece) {
            sum += piece->weight;
            sourceItems += piece->endsSource;
            last = piece->endsDestination;
        }
        ASSERT_EQ(uint64_t{1} << table.shift, sum) << n << " to " << m << " item " << done;
    }
    ASSERT_EQ(n, sourceItems) << n << " to " << m;
}

TEST(PieceTable, WeightsOfEachItemAddUpExactly) {
    for (int32_t n = 1; n <= 70; ++n) {
        for (int32_t m = 1; m <= 70; ++m) checkTable(n, m);
    }
    for (const int32_t n : {1, 2, 1000, 32768, 32769, 65521, 65535, 65536}) {
        for (const int32_t m : {1, 100, 4001, 65535, 65536}) checkTable(n, m);
    }
}

}  // namespace
}  // namespace vorn
