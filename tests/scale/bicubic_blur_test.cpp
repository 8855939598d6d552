#include <gtest/gtest.h>

#include "platform/environment.h"
#include "scale/bicubic_plan.h"
#include "tests/scale/references.h"
#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

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

class BicubicBlurTest : public testing::Test {
  protected:
    void TearDown() override { vorn::platform::publishVariable("VORN_BICUBIC_BLUR", ""); }
};

TEST_F(BicubicBlurTest, FollowsTheEnvironmentAtEveryInit) {
    Random random(11);
    for (const char* text : {"0", "0.1", "0.6", "1", "1.7", "40", "256"}) {
        ASSERT_TRUE(vorn::platform::publishVariable("VORN_BICUBIC_BLUR", text));
        for (int32_t bytes = 1; bytes <= 2; ++bytes) {
            for (int32_t i = 0; i < 8; ++i) {
                const Image image =
                    randomImage(random, between(random, 2, 40), between(random, 2, 30), 3, bytes);
                ScaleRun run;
                run.method = "bcscale";
                run.width = between(random, 2, 60), run.lines = between(random, 2, 60);
                const Image made = scaleThrough(image, run);
                EXPECT_TRUE(referenceBicubic(image, run.width, run.lines, std::atof(text)) == made)
                    << "blur " << text << " " << image.width << "x" << image.lines << " " << run;
            }
        }
    }
}

// Without blur, each of four lines is made of one of forty, the last of line 35.
TEST_F(BicubicBlurTest, AsksForNoLinesBehindTheLastThatIsNeeded) {
    ASSERT_TRUE(vorn::platform::publishVariable("VORN_BICUBIC_BLUR", "0"));
    ScaleRun run;
    run.method = "bcscale";
    run.width = 2, run.lines = 4, run.destinationBand = 4;
    scaleThrough(Image(2, 40, 1, 1), run);
    EXPECT_EQ(std::string(36, '1') + "23", run.codes);
}

}  // namespace
}  // namespace vorn_test
