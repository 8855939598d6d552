// Small pictures whose result can be worked out by hand.
#include <gtest/gtest.h>

#include "tests/scale/scale_run.h"

namespace vorn_test {
namespace {

using Line = std::vector<int32_t>;

// One line scaled to `width`, and the same samples as a column scaled to as many lines.
Line scaledLine(const char* method, const Line& line, int32_t width, int32_t bytes = 1) {
    const auto length = static_cast<int32_t>(line.size());
    Image across(length, 1, 1, bytes), down(1, length, 1, bytes);
    across.samples = down.samples = line;
    ScaleRun acrossRun{.method = method, .width = width}, downRun{.method = method, .lines = width};
    const Line made = scaleThrough(across, acrossRun).samples;
    EXPECT_EQ(made, scaleThrough(down, downRun).samples);
    return made;
}

TEST(ScaledLines, HaveTheSamplesThatWereWorkedOutByHandWhateverTheMethodsCase) {
    const struct {
        const char* method;
        Line from, to;
        int32_t bytes = 1;
    } cases[] = {
        // The sample above when reducing, below when enlarging; names are found in any case, others
        // are the nearest sample's.
        {"QDScale", {0, 1, 2, 3}, {0, 2}},
        {"fastest", {0, 1, 2}, {0, 2}},
        {"FASTEST", {0, 1, 2}, {0, 0, 1, 2}},
        {nullptr, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, {0, 2, 4, 6, 8}},
        {"", {0, 90, 30, 60}, {0, 30}},
        {"no such scaler", {0, 90, 30, 60}, {0, 30}},
        {"bestu", {0, 90, 30, 60}, {0, 30}},
        {"bestupp", {0, 90, 30, 60}, {0, 30}},
        // Weighed by area and rounded half up.
        {"AvScale", {10, 20, 30, 40}, {15, 35}},
        {"avscale", {10, 11}, {11}},
        {"BESTDOWN", {9, 200, 90}, {(3 * 9 + 200 + 2) / 4, (200 + 3 * 90 + 2) / 4}},
        {"bestdown", {10, 21}, {10, 16, 21}},
        {"bestdown", {65535, 65535, 65535, 65535, 65535}, {65535, 65535, 65535}, 2},
        // The first and last samples lie on each other.
        {"BlScale", {10, 21}, {10, 16, 21}},
        {"blscale", {7}, {7, 7, 7, 7}},
        {"blscale", {5, 9, 200}, {5}},
        {"blscale", {65535, 65535}, {65535, 65535, 65535}, 2},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.to, scaledLine(c.method, c.from, static_cast<int32_t>(c.to.size()), c.bytes))
            << &c - cases;
    }
    EXPECT_EQ(250, scaledLine("blscale", {0, 250}, 50).back());  // the last step is exact
}

}  // namespace
}  // namespace vorn_test
