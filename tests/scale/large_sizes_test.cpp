// Sizes at the limits of the methods' numbers.
#include <gtest/gtest.h>

#include "tests/scale/references.h"
#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

struct Size {
    int32_t width, lines;
};

template <class Reference>
void compare(const char* method, Reference reference, Size from, Size to, int32_t bytes) {
    Random random(static_cast<unsigned>(from.width + to.lines));
    Image image(from.width, from.lines, 1, bytes);
    for (size_t i = 0; i < image.samples.size(); ++i) {
        image.samples[i] = i % 3 == 0 ? between(random, 0, image.largest()) : image.largest();
    }
    ScaleRun run;
    run.method = method;
    run.width = to.width, run.lines = to.lines;
    run.sourceBand = 7, run.destinationBand = 5;
    const Image made = scaleThrough(image, run);
    EXPECT_TRUE(reference(image, to.width, to.lines) == made)
        << from.width << "x" << from.lines << " of " << bytes << " bytes, " << run;
}

constexpr int32_t kLargest = 65536;

TEST(LargeSizes, OtherMethodsTake65536BothWays) {
    const Size pairs[][2] = {{{kLargest, 2}, {kLargest - 1, 3}},
                             {{2, kLargest}, {1, 77}},
                             {{3, 2}, {kLargest, 2}},
                             {{2, 3}, {3, kLargest}},
                             {{kLargest, 3}, {1, 1}},
                             {{kLargest, 2}, {1000, 2}}};
    for (int32_t bytes = 1; bytes <= 2; ++bytes) {
        for (const auto& pair : pairs) {
            compare("fastest", referenceNearest, pair[0], pair[1], bytes);
            compare("bestdown", referenceAverage, pair[0], pair[1], bytes);
            compare("blscale", referenceBilinear, pair[0], pair[1], bytes);
        }
    }
}

// 8-bit sums fill 32 bits at 4096 x 4096 and need more above.
TEST(LargeSizes, AveragesExactlyWhereSumsFillTheirWords) {
    for (const int32_t lines : {4096, 4097}) {
        for (int32_t bytes = 1; bytes <= 2; ++bytes) {
            Image image(4096, lines, 1, bytes);
            std::fill(image.samples.begin(), image.samples.end(), image.largest());
            ScaleRun run;
            run.method = "bestdown";
            run.sourceBand = 64;
            EXPECT_EQ(image.largest(), scaleThrough(image, run).at(0, 0, 0));
        }
    }
}

TEST(LargeSizes, BicubicTakes16000BothWays) {
    const auto reference = [](const Image& image, int32_t width, int32_t lines) {
        return referenceBicubic(image, width, lines);
    };
    for (int32_t bytes = 1; bytes <= 2; ++bytes) {
        compare("bestup", reference, {16000, 3}, {15999, 4}, bytes);
        compare("bestup", reference, {16000, 2}, {2, 5}, bytes);
        compare("bestup", reference, {3, 16000}, {2, 9}, bytes);
        compare("bestup", reference, {2, 3}, {16000, 2}, bytes);
        compare("bestup", reference, {3, 2}, {2, 16000}, bytes);
    }
}

}  // namespace
}  // namespace vorn_test
