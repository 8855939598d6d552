#include "tools/target_size.h"

#include <gtest/gtest.h>

namespace vorn::tool {
namespace {

constexpr Size kOwn = {600, 400};

TEST(TargetSize, KeepsTheAspectUnlessItIsToldNotTo) {
    const struct {
        const char* text;
        Size size;
    } cases[] = {
        {"300x300", {300, 200}}, {"900x100", {150, 100}},   {"300x300!", {300, 300}},
        {"150", {150, 100}},     {"150x", {0, 0}},          {"x1000", {1500, 1000}},
        {"50%", {300, 200}},     {"12.5%", {75, 50}},       {"0.01%", {1, 1}},
        {"1x1", {1, 1}},         {"65536", {65536, 43691}},
    };
    for (const auto& c : cases) {
        const auto wanted = TargetSize::parse(c.text);
        ASSERT_EQ(wanted.has_value(), c.size.width > 0) << c.text;
        if (wanted) {
            EXPECT_EQ(wanted->of(kOwn), c.size) << c.text;
        }
    }
}

TEST(TargetSize, FitsWithoutEnlarging) {
    EXPECT_EQ(TargetSize::parse("900x900")->fitting(kOwn), kOwn);
    EXPECT_EQ(TargetSize::parse("300x900")->fitting(kOwn), (Size{300, 200}));
    EXPECT_EQ(TargetSize::parse("600x400")->fitting(kOwn), kOwn);
}

TEST(TargetSize, RefusesWhatIsNoSize) {
    for (const char* text :
         {"",    "x",     "0", "0x5", "5x0", "-3x4", "3x-4", "a",    "5y6", "5x6x7", "70000", "5!",
          "x5!", "5x6!!", "%", "-5%", "0%",  "nan%", "inf%", "1e9%", " 5",  "5 ",    "5x 6"}) {
        EXPECT_FALSE(TargetSize::parse(text).has_value()) << text;
    }
}

}  // namespace
}  // namespace vorn::tool
