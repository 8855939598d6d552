#include "pixels/orientation.h"

#include <gtest/gtest.h>

#include "tests/pixels/grid.h"
#include "tests/pixels/transfer_rig.h"

namespace vorn::test {
namespace {

struct Handle {
    Handle() : image(VORN_L_ImageVaCreateHandle(0, TAG_End)) {}
    ~Handle() { VORN_L_ImageDestroyHandle(image); }
    VORN_Image* image;
};

// A grid of byte samples in two channels, the second complemented.
Picture pictureOf(const Grid& grid) {
    Picture picture = Picture::standard(DF_LineInterleaved8, grid.width, grid.height, 2);
    for (int y = 0; y < grid.height; y++) {
        for (int x = 0; x < grid.width; x++) {
            picture.set(0, x, y, grid.at(x, y));
            picture.set(1, x, y, 255 - grid.at(x, y));
        }
    }
    return picture;
}

Grid gridOf(const Picture& picture) {
    Grid grid{picture.record.width, picture.record.height};
    for (int y = 0; y < grid.height; y++) {
        for (int x = 0; x < grid.width; x++) {
            grid.values.push_back(picture.get(0, x, y));
            EXPECT_EQ(picture.get(1, x, y), 255 - picture.get(0, x, y));
        }
    }
    return grid;
}

TEST(Orientation, CorrectsEveryPairInRealPixels) {
    const Grid upright = Grid::counted(3, 5);
    for (int source = 0; source < 8; source++) {
        for (int target = 0; target < 8; target++) {
            SCOPED_TRACE(testing::Message() << source << " to " << target);
            Handle handle;
            const bool swapped = VORN_L_SetOrientationCorrection(handle.image, source, target) != 0;
            EXPECT_EQ(swapped, (source + target) % 2 == 1);
            EXPECT_EQ(handle.image->axesSwapped, swapped);
            EXPECT_EQ(handle.image->orientation == nullptr, source == target);

            // The host's picture seen through the correction is the module's.
            Picture host = pictureOf(upright.oriented(target));
            if (handle.image->orientation != nullptr) {
                handle.image->orientation(host.record);
            }
            EXPECT_EQ(gridOf(host), upright.oriented(source));
        }
    }
}

TEST(Orientation, KnowsEightOrientationsOnly) {
    const std::pair<int, int> pairs[] = {{-1, 2}, {2, -1}, {8, 0}, {0, 8}, {3, 3}, {-1, 7}};
    for (const auto& [source, target] : pairs) {
        Handle handle;
        EXPECT_FALSE(VORN_L_SetOrientationCorrection(handle.image, source, target));
        EXPECT_EQ(handle.image->orientation, nullptr);
        EXPECT_FALSE(handle.image->axesSwapped);
    }
}

TEST(Orientation, LeavesAbsentChannelsAbsent) {
    Picture picture = Picture::standard(DF_Chunky3x8, 4, 6, 3);
    picture.drop(1);
    for (auto rewrite : {VORN_L_MirrorColumns, VORN_L_MirrorLines, VORN_L_TurnA, VORN_L_TurnB}) {
        rewrite(picture.record);
        EXPECT_EQ(picture.record.channelPlace[1], nullptr);
        EXPECT_EQ(picture.record.pixelStep[1], 3);
    }
}

}  // namespace
}  // namespace vorn::test
