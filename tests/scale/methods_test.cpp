// The four methods against their plain references.
#include <gtest/gtest.h>

#include <functional>

#include "platform/environment.h"
#include "scale/bicubic_plan.h"
#include "support/cpu.h"
#include "tests/scale/references.h"
#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

using vorn::KernelLevel;

using Reference = std::function<Image(const Image&, int32_t, int32_t)>;

Reference bicubicWith(double blur) {
    return [blur](const Image& image, int32_t width, int32_t lines) {
        return referenceBicubic(image, width, lines, blur);
    };
}

struct Method {
    const char* name;
    Reference reference;
    int32_t smallest;
};

const Method kMethods[] = {{"fastest", referenceNearest, 1},
                           {"bestdown", referenceAverage, 1},
                           {"blscale", referenceBilinear, 1},
                           {"bestup", bicubicWith(1), 2}};

// The samples that a run makes are those of the reference, where channels are present.
void compare(const Reference& reference, const Image& image, ScaleRun run) {
    Image expected = reference(image, run.width, run.lines);
    const unsigned present = run.sourceMask & run.destinationMask;
    for (size_t i = 0; i < expected.samples.size(); ++i) {
        if (!((present >> (i % static_cast<size_t>(image.channels))) & 1)) expected.samples[i] = 0;
    }
    EXPECT_TRUE(expected == scaleThrough(image, run))
        << image.width << "x" << image.lines << "x" << image.channels << " of " << image.bytes
        << " bytes, " << run;
}

// A size up to `largest`, often one in a simple ratio to `other`.
int32_t randomSize(Random& random, int32_t smallest, int32_t largest, int32_t other) {
    const int32_t sizes[] = {other * pick(random, 1, 4), other / pick(random, 1, 4)};
    const int32_t kind = pick(random, 0, 5);
    return kind < 2 ? std::clamp(sizes[kind], smallest, largest) : pick(random, smallest, largest);
}

unsigned randomMask(Random& random) {
    return pick(random, 0, 3) == 0 ? static_cast<unsigned>(pick(random, 0, 255)) : 0xFFu;
}

ScaleRun randomRun(Random& random, const Method& method, const Image& image) {
    ScaleRun run;
    run.method = method.name;
    run.width = randomSize(random, method.smallest, 67, image.width);
    run.lines = randomSize(random, method.smallest, 67, image.lines);
    run.sourceForm = pick(random, 0, 2) ? static_cast<unsigned>(random()) : 0;
    run.destinationForm = pick(random, 0, 1) ? run.sourceForm : static_cast<unsigned>(random());
    run.sourceBand = pick(random, 0, 2) ? pick(random, 1, 9) : image.lines;
    run.destinationBand = pick(random, 0, 2) ? pick(random, 1, 9) : run.lines;
    run.sourceMask = randomMask(random);
    run.destinationMask = randomMask(random);
    run.announced = pick(random, 0, 2) == 0;
    return run;
}

class MethodTest : public testing::TestWithParam<Method> {
  protected:
    void TearDown() override { vorn::limitKernels(KernelLevel::Newest); }
};

TEST_P(MethodTest, MakesTheSamplesOfItsReferenceWithAnyKernelsBandsAndLayouts) {
    const Method& method = GetParam();
    for (unsigned seed = 0; seed < 2300 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        vorn::limitKernels(static_cast<KernelLevel>(seed % 7 == 0 ? 0 : 1 + seed % 2));
        Random random(seed);
        const int32_t channels = pick(random, 0, 1) ? pick(random, 1, 8) : 3;
        const Image image =
            randomImage(random, randomSize(random, method.smallest, 67, 16),
                        randomSize(random, method.smallest, 40, 12), channels, pick(random, 1, 2));
        compare(method.reference, image, randomRun(random, method, image));
    }
}

// Every width up to 67, in the layouts that have kernels of their own.
TEST_P(MethodTest, MakesTheSamplesOfItsReferenceAtEveryWidth) {
    const Method& method = GetParam();
    Random random(7);
    for (int32_t i = 0; i < 6 * 67 && !HasFailure(); ++i) {
        const int32_t channels[] = {1, 3, 4};
        const int32_t width = std::max(1 + i % 67, method.smallest);
        ScaleRun run{.method = method.name,
                     .width = pick(random, method.smallest, 130),
                     .lines = pick(random, method.smallest, 19),
                     .destinationBand = pick(random, 1, 12),
                     .announced = false};
        compare(method.reference, randomImage(random, width, 5, channels[i / 67 % 3], 1 + i / 201),
                run);
    }
}

// Sizes at the limits of the methods' numbers.
TEST_P(MethodTest, TakesTheLargestSizesBothWays) {
    const Method& method = GetParam();
    const int32_t least = method.smallest, most = least == 1 ? 65536 : 16000;
    const int32_t sizes[][4] = {{most, 2, most - 1, 3}, {2, most, least, 77}, {3, 2, most, 2},
                                {2, 3, 3, most},        {most, 3, least, 2},  {most, 2, 1000, 2}};
    for (int32_t bytes = 1; bytes <= 2; ++bytes) {
        for (const auto& [fromWidth, fromLines, toWidth, toLines] : sizes) {
            Random random(static_cast<unsigned>(fromWidth + toLines));
            Image image(fromWidth, fromLines, 1, bytes);
            for (size_t i = 0; i < image.samples.size(); ++i)
                image.samples[i] = i % 3 == 0 ? pick(random, 0, image.largest()) : image.largest();
            ScaleRun run{.method = method.name, .width = toWidth, .lines = toLines};
            run.sourceBand = 7, run.destinationBand = 5;
            compare(method.reference, image, run);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, MethodTest, testing::ValuesIn(kMethods), [](const auto& method) {
    return std::string(method.param.name);
});

// 8-bit sums fill 32 bits at 4096 x 4096 and need more above.
TEST(Averages, AreExactWhereSumsFillTheirWords) {
    for (const int32_t lines : {4096, 4097}) {
        for (int32_t bytes = 1; bytes <= 2; ++bytes) {
            Image image(4096, lines, 1, bytes);
            std::fill(image.samples.begin(), image.samples.end(), image.largest());
            ScaleRun run{.method = "bestdown", .sourceBand = 64};
            EXPECT_EQ(image.largest(), scaleThrough(image, run).at(0, 0, 0));
        }
    }
}

TEST(BicubicBlur, IsReadAsANumberOfTheCLocaleAndClamped) {
    const struct {
        const char* text;
        double blur;
    } kCases[] = {{nullptr, 1}, {"", 1},           {"soft", 1},   {"nan", 1},     {"-nan(1)", 1},
                  {"0.5", 0.5}, {" \t+.25", 0.25}, {"2,5", 2},    {"1.5e1x", 15}, {"0x1p-1", 0.5},
                  {"300", 256}, {"-1", 0},         {"-", 1},      {"+-1", 1},     {"inf", 256},
                  {"-inf", 0},  {"1e999", 256},    {"1e-999", 0}, {"-1e999", 0}};
    for (const auto& c : kCases) {
        EXPECT_EQ(c.blur, vorn::parseBlur(c.text)) << (c.text ? c.text : "(unset)");
    }
}

TEST(BicubicBlur, FollowsTheEnvironmentAtEveryInit) {
    Random random(11);
    for (const char* text : {"0", "0.1", "0.6", "1", "1.7", "40", "256"}) {
        ASSERT_TRUE(vorn::platform::publishVariable("VORN_BICUBIC_BLUR", text));
        for (int32_t i = 0; i < 16; ++i) {
            const Image image =
                randomImage(random, pick(random, 2, 40), pick(random, 2, 30), 3, 1 + i % 2);
            compare(
                bicubicWith(std::atof(text)), image,
                {.method = "bcscale", .width = pick(random, 2, 60), .lines = pick(random, 2, 60)});
        }
    }
    // Without blur, each of four lines is made of one of forty, the last of line 35: no lines
    // behind it are asked for.
    ASSERT_TRUE(vorn::platform::publishVariable("VORN_BICUBIC_BLUR", "0"));
    ScaleRun run{.method = "bcscale", .width = 2, .lines = 4, .destinationBand = 4};
    scaleThrough(Image(2, 40, 1, 1), run);
    EXPECT_EQ(std::string(36, '1') + "23", run.codes);
    vorn::platform::publishVariable("VORN_BICUBIC_BLUR", "");
}

}  // namespace
}  // namespace vorn_test
