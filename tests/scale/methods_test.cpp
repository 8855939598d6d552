// The four methods against their plain references, over random pictures, sizes, layouts and bands.
#include <gtest/gtest.h>

#include "support/cpu.h"
#include "tests/scale/reference_average.h"
#include "tests/scale/reference_bicubic.h"
#include "tests/scale/reference_bilinear.h"
#include "tests/scale/reference_nearest.h"
#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

using vorn::KernelLevel;

struct Method {
    const char* name;
    Image (*reference)(const Image&, int32_t, int32_t);
    int32_t smallest;
};

Image plainBicubic(const Image& image, int32_t width, int32_t lines) {
    return referenceBicubic(image, width, lines);
}

const Method kMethods[] = {{"fastest", referenceNearest, 1},
                           {"bestdown", referenceAverage, 1},
                           {"blscale", referenceBilinear, 1},
                           {"bestup", plainBicubic, 2}};

// A size up to `largest`, often a prime, or one in a simple ratio to `other`.
int32_t randomSize(Random& random, int32_t smallest, int32_t largest, int32_t other) {
    static constexpr int32_t kPrimes[] = {2,  3,  5,  7,  11, 13, 17, 19,
                                          23, 29, 31, 37, 41, 53, 61, 67};
    int32_t size = between(random, smallest, largest);
    const int32_t kind = between(random, 0, 5);
    if (kind == 0) size = kPrimes[between(random, 0, 15)];
    if (kind == 1) size = other * between(random, 1, 4);
    if (kind == 2) size = other / between(random, 1, 4);
    return std::clamp(size, smallest, largest);
}

Layout randomLayout(Random& random) {
    return static_cast<Layout>(between(random, 0, static_cast<int32_t>(Layout::Count) - 1));
}

unsigned randomMask(Random& random) {
    return between(random, 0, 3) == 0 ? static_cast<unsigned>(between(random, 0, 255)) : 0xFFu;
}

ScaleRun randomRun(Random& random, const Method& method, const Image& image) {
    ScaleRun run;
    run.method = method.name;
    run.width = randomSize(random, method.smallest, 67, image.width);
    run.lines = randomSize(random, method.smallest, 67, image.lines);
    run.sourceLayout = randomLayout(random);
    run.destinationLayout = between(random, 0, 1) ? run.sourceLayout : randomLayout(random);
    run.sourceBand = between(random, 0, 2) ? between(random, 1, 9) : image.lines;
    run.destinationBand = between(random, 0, 2) ? between(random, 1, 9) : run.lines;
    run.sourceMask = randomMask(random);
    run.destinationMask = randomMask(random);
    run.announced = between(random, 0, 2) == 0;
    return run;
}

void keepPresent(Image& image, unsigned present) {
    for (size_t i = 0; i < image.samples.size(); ++i) {
        if (!((present >> (i % static_cast<size_t>(image.channels))) & 1)) image.samples[i] = 0;
    }
}

void compareWithReference(const Method& method, unsigned seed) {
    Random random(seed);
    const int32_t channels = between(random, 0, 1) ? between(random, 1, 8) : 3;
    const Image image =
        randomImage(random, randomSize(random, method.smallest, 67, 16),
                    randomSize(random, method.smallest, 40, 12), channels, between(random, 1, 2));
    ScaleRun run = randomRun(random, method, image);
    Image expected = method.reference(image, run.width, run.lines);
    keepPresent(expected, run.sourceMask & run.destinationMask);
    const Image made = scaleThrough(image, run);
    EXPECT_TRUE(expected == made) << "seed " << seed << ": " << image.width << "x" << image.lines
                                  << "x" << image.channels << " of " << image.bytes << " bytes, "
                                  << run;
}

class MethodTest : public testing::TestWithParam<Method> {
  protected:
    void TearDown() override { vorn::limitKernels(vorn::KernelLevel::Newest); }
};

TEST_P(MethodTest, MakesTheSamplesOfItsReferenceWithAnyKernelsBandsAndLayouts) {
    for (const KernelLevel level : {KernelLevel::Plain, KernelLevel::Avx2, KernelLevel::Newest}) {
        vorn::limitKernels(level);
        const unsigned first = 2000 * static_cast<unsigned>(level);
        const unsigned count = level == KernelLevel::Plain ? 300 : 1000;
        for (unsigned seed = first; seed < first + count && !HasFailure(); ++seed) {
            compareWithReference(GetParam(), seed);
        }
    }
}

// Every width between 1 and 67 both ways, in the layouts that have kernels of their own.
TEST_P(MethodTest, MakesTheSamplesOfItsReferenceAtEveryWidth) {
    const Method method = GetParam();
    Random random(7);
    for (const int32_t channels : {1, 3, 4}) {
        for (int32_t bytes = 1; bytes <= 2; ++bytes) {
            for (int32_t width = method.smallest; width <= 67; ++width) {
                const Image image = randomImage(random, width, 5, channels, bytes);
                ScaleRun run;
                run.method = method.name;
                run.width = between(random, method.smallest, 130);
                run.lines = between(random, method.smallest, 19);
                run.destinationBand = between(random, 1, 12);
                run.announced = false;
                const Image made = scaleThrough(image, run);
                ASSERT_TRUE(method.reference(image, run.width, run.lines) == made)
                    << width << "x5x" << channels << " of " << bytes << " bytes, " << run;
            }
        }
    }
}

TEST_P(MethodTest, CopiesAPictureOfTheSameSize) {
    Random random(3);
    for (int32_t bytes = 1; bytes <= 2; ++bytes) {
        if (std::string(GetParam().name) == "bestup") continue;  // it filters
        const Image image = randomImage(random, 23, 17, 3, bytes);
        ScaleRun run;
        run.method = GetParam().name;
        run.width = 23, run.lines = 17;
        EXPECT_TRUE(image == scaleThrough(image, run));
    }
}

TEST_P(MethodTest, KeepsAConstantPictureConstant) {
    for (int32_t n = GetParam().smallest; n <= 24; ++n) {
        for (int32_t m = GetParam().smallest; m <= 24; ++m) {
            for (const int32_t value : {100, 255}) {
                Image image(n, m, 1, 1);
                std::fill(image.samples.begin(), image.samples.end(), value);
                ScaleRun run;
                run.method = GetParam().name;
                run.width = m, run.lines = n;
                const Image made = scaleThrough(image, run);
                ASSERT_EQ(static_cast<ptrdiff_t>(made.samples.size()),
                          std::count(made.samples.begin(), made.samples.end(), value))
                    << n << "x" << m << " turned to " << m << "x" << n;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, MethodTest, testing::ValuesIn(kMethods), [](const auto& method) {
    return std::string(method.param.name);
});

}  // namespace
}  // namespace vorn_test
