#include <gtest/gtest.h>

#include <memory>

#include "tests/catalogue/catalogue_fixture.h"

namespace {

struct ListDeleter {
    void operator()(char** list) const { VORN_H_FreeStringList(list); }
};

std::unique_ptr<char*, ListDeleter> listOf(const char* text) {
    return std::unique_ptr<char*, ListDeleter>(VORN_L_StringToStringList(text));
}

TEST(Legality, SizesLieInSomeRange) {
    const char* any = "1x1-65535x65535";
    const char* some = "any,1x1-640,1x2-3x4,800x600-800x600,99999999999x1-99999999999x1";
    const struct {
        const char* ranges;
        int32_t width, height;
        bool legal;
    } cases[] = {{any, 1, 1, true},      {any, 65535, 65535, true}, {any, 0, 5, false},
                 {any, 70000, 1, false}, {some, 3, 2, true},        {some, 4, 3, false},
                 {some, 3, 1, false},    {some, 800, 600, true},    {some, 640, 1, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(VORN_L_CheckSizeLegality(listOf(c.ranges).get(), c.width, c.height), c.legal)
            << c.width << "x" << c.height;
    }
    EXPECT_TRUE(VORN_L_CheckSizeLegality(nullptr, -1, 0));
}

TEST(Legality, DepthsAreNumbersOrRanges) {
    for (const char* text : {"1-8,16", "16,1-8", "x,16-,1-8"}) {
        const auto depths = listOf(text);
        EXPECT_TRUE(VORN_L_CheckDepthLegality(depths.get(), 16)) << text;
        EXPECT_TRUE(VORN_L_CheckDepthLegality(depths.get(), 4)) << text;
        EXPECT_FALSE(VORN_L_CheckDepthLegality(depths.get(), 12)) << text;
        EXPECT_EQ(VORN_L_GetMaxDepth(depths.get()), 16) << text;
    }
    EXPECT_TRUE(VORN_L_CheckDepthLegality(nullptr, 99));
    EXPECT_EQ(VORN_L_GetMaxDepth(nullptr), 8);
    char* none[] = {nullptr};
    EXPECT_EQ(VORN_L_GetMaxDepth(none), 1);
}

TEST(ColorSpaceNames, AreFoundWithoutRegardToCase) {
    for (const auto& [name, number] : {std::pair("cmyk", VORN_CS_CMYK),
                                       {"YUV", VORN_CS_YUV},
                                       {"cMapped", VORN_CS_CMAPPED},
                                       {"Lab", VORN_CS_NONE}})
        EXPECT_EQ(VORN_L_FindColorSpace(name), number);
    const auto list = listOf("rgb, Gray,YUV601");
    for (int32_t space = -1; space <= 8; ++space)
        EXPECT_EQ(VORN_L_ColorSpaceInList(space, list.get()),
                  space == VORN_CS_RGB || space == VORN_CS_YUV601)
            << space;
    EXPECT_FALSE(VORN_L_ColorSpaceInList(VORN_CS_RGB, nullptr));
}

}  // namespace
