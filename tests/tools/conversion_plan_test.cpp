#include "tools/conversion_plan.h"

#include <gtest/gtest.h>

namespace {

using namespace vorn::tool;

Capabilities saver(std::vector<std::string> colorSpaces,
                   std::vector<std::string> depths = {"8", "16"}) {
    Capabilities capabilities;
    capabilities.name = "test";
    capabilities.colorSpaces = std::move(colorSpaces);
    capabilities.bitsPerChannel = std::move(depths);
    return capabilities;
}

ImageDescription image(int32_t colorSpace, int32_t channels, int32_t bytes = 1) {
    ImageDescription description;
    description.colorSpace = colorSpace;
    description.channels = channels;
    description.bytesPerChannel = bytes;
    if (colorSpace == VORN_CS_CMAPPED) {
        description.paletteEntries = 16;
    }
    return description;
}

// The colour space of the plan, -1 when there is none.
int32_t planned(const ImageDescription& description,
                const Capabilities& capabilities,
                const ConversionWishes& wishes = {}) {
    std::string reason;
    const auto plan = planConversion(description, capabilities, wishes, reason);
    EXPECT_EQ(plan.has_value(), reason.empty());
    return plan ? plan->colorSpace : -1;
}

TEST(ConversionPlan, TakesTheWishOrKeepsTheColorSpaceOrTakesTheRichestThatCanBeMade) {
    constexpr int32_t kNone = -1;
    const struct {
        int32_t own, channels;
        std::vector<std::string> ofTheSaver;
        int32_t planned;
        ConversionWishes wishes = {};
    } cases[] = {
        {VORN_CS_GRAY, 1, {"RGB", "Gray"}, VORN_CS_GRAY},
        {VORN_CS_CMYK, 4, {"RGB", "CMYK"}, VORN_CS_CMYK},
        {VORN_CS_CMAPPED, 1, {"RGB", "CMAPPED"}, VORN_CS_CMAPPED},
        {VORN_CS_GRAY, 1, {"CMYK", "YUV601", "RGB"}, VORN_CS_RGB},
        {VORN_CS_RGB, 3, {"Gray", "YUV601"}, VORN_CS_YUV601},
        {VORN_CS_CMAPPED, 1, {"Gray", "RGB"}, VORN_CS_RGB},
        {VORN_CS_RGB, 3, {"CMAPPED"}, kNone},
        {VORN_CS_CMYK, 4, {"RGB"}, kNone},
        {VORN_CS_RGB, 3, {"RGB", "Gray"}, VORN_CS_GRAY, {.colorSpace = VORN_CS_GRAY}},
        {VORN_CS_RGB, 3, {"RGB", "YUV"}, kNone, {.colorSpace = VORN_CS_YUV}},
        {VORN_CS_RGB, 3, {"RGB", "CMAPPED"}, kNone, {.colorSpace = VORN_CS_CMAPPED}},
        {VORN_CS_RGB, 3, {"RGB", "Gray"}, kNone, {.colorSpace = VORN_CS_CMYK}},
        // An index stretched from 8 to 16 bits would name another entry.
        {VORN_CS_CMAPPED, 1, {"RGB", "CMAPPED"}, VORN_CS_RGB, {.depth = 16}},
        {VORN_CS_CMAPPED, 1, {"RGB", "CMAPPED"}, VORN_CS_CMAPPED, {.depth = 8}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(planned(image(c.own, c.channels), saver(c.ofTheSaver), c.wishes), c.planned)
            << &c - cases;
    ImageDescription greys = image(VORN_CS_CMAPPED, 1);
    greys.greyPalette = true;
    EXPECT_EQ(planned(greys, saver({"RGB", "Gray"})), VORN_CS_GRAY);
    EXPECT_EQ(planned(greys, saver({"RGB", "Gray", "CMAPPED"})), VORN_CS_CMAPPED);
    EXPECT_EQ(planned(image(VORN_CS_CMAPPED, 1, 2), saver({"RGB", "CMAPPED"}, {"1-8"})),
              VORN_CS_RGB);
    ImageDescription withoutPalette = image(VORN_CS_CMAPPED, 1);
    withoutPalette.paletteEntries.reset();
    EXPECT_NE(planned(withoutPalette, saver({"RGB", "CMAPPED"})), VORN_CS_CMAPPED);
}

TEST(ConversionPlan, FollowsTheDepthsOfTheSaver) {
    std::string reason;
    const auto bytes = [&reason](int32_t own, const Capabilities& capabilities,
                                 std::optional<int32_t> wish) {
        const auto plan =
            planConversion(image(VORN_CS_RGB, 3, own), capabilities, {.depth = wish}, reason);
        return plan ? plan->bytesPerChannel : 0;
    };
    EXPECT_EQ(bytes(2, saver({"RGB"}, {"8", "16"}), {}), 2);
    EXPECT_EQ(bytes(2, saver({"RGB"}, {"8", "12"}), {}), 2);
    EXPECT_EQ(bytes(2, saver({"RGB"}, {"1-8"}), {}), 1);
    EXPECT_EQ(bytes(1, saver({"RGB"}, {"16"}), {}), 2);
    EXPECT_EQ(bytes(2, saver({"RGB"}, {"8", "16"}), 8), 1);
    EXPECT_EQ(bytes(1, saver({"RGB"}, {"8"}), 16), 0) << "asked for and not to be had";
}

TEST(ConversionPlan, CarriesAlphaToSaversThatKeepIt) {
    ImageDescription withAlpha = image(VORN_CS_GRAY, 2);
    withAlpha.alpha = true;
    Capabilities capabilities = saver({"RGB"});
    std::string reason;
    EXPECT_EQ(planConversion(withAlpha, capabilities, {}, reason)->channels(), 3);
    capabilities.alpha = true;
    EXPECT_EQ(planConversion(withAlpha, capabilities, {}, reason)->channels(), 4);
    EXPECT_EQ(planConversion(image(VORN_CS_RGB, 3), capabilities, {}, reason)->channels(), 3);
    capabilities.alphaAlways = true;
    const auto opaque = planConversion(image(VORN_CS_RGB, 3), capabilities, {}, reason);
    EXPECT_EQ(opaque->channels(), 4);
    EXPECT_TRUE(opaque->addAlpha);
}

}  // namespace
