#include <gtest/gtest.h>

#include "tests/catalogue/catalogue_fixture.h"

namespace {

class Ranges {
  public:
    explicit Ranges(const char* text) : list_(VORN_L_StringToStringList(text)) {}
    ~Ranges() { VORN_H_FreeStringList(list_); }
    char** get() const { return list_; }

  private:
    char** list_;
};

TEST(Legality, SizesLieInSomeRange) {
    const Ranges any("1x1-65535x65535");
    EXPECT_TRUE(VORN_L_CheckSizeLegality(any.get(), 1, 1));
    EXPECT_TRUE(VORN_L_CheckSizeLegality(any.get(), 65535, 65535));
    EXPECT_FALSE(VORN_L_CheckSizeLegality(any.get(), 0, 5));
    EXPECT_FALSE(VORN_L_CheckSizeLegality(any.get(), 70000, 1));
    const Ranges some("any,1x1-640,1x2-3x4,800x600-800x600,99999999999x1-99999999999x1");
    EXPECT_TRUE(VORN_L_CheckSizeLegality(some.get(), 3, 2));
    EXPECT_FALSE(VORN_L_CheckSizeLegality(some.get(), 4, 3));
    EXPECT_TRUE(VORN_L_CheckSizeLegality(some.get(), 800, 600));
    EXPECT_FALSE(VORN_L_CheckSizeLegality(some.get(), 640, 1));
    EXPECT_TRUE(VORN_L_CheckSizeLegality(nullptr, -1, 0));
}

TEST(Legality, DepthsAreNumbersOrRanges) {
    for (const char* text : {"1-8,16", "16,1-8", "x,16-,1-8"}) {
        const Ranges depths(text);
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
    EXPECT_EQ(VORN_L_FindColorSpace("cmyk"), VORN_CS_CMYK);
    EXPECT_EQ(VORN_L_FindColorSpace("YUV"), VORN_CS_YUV);
    EXPECT_EQ(VORN_L_FindColorSpace("cMapped"), VORN_CS_CMAPPED);
    EXPECT_EQ(VORN_L_FindColorSpace("Lab"), VORN_CS_NONE);

    const Ranges list("rgb, Gray,YUV601");
    EXPECT_TRUE(VORN_L_ColorSpaceInList(VORN_CS_RGB, list.get()));
    EXPECT_TRUE(VORN_L_ColorSpaceInList(VORN_CS_YUV601, list.get()));
    EXPECT_FALSE(VORN_L_ColorSpaceInList(VORN_CS_GRAY, list.get()));
    EXPECT_FALSE(VORN_L_ColorSpaceInList(VORN_CS_YUV, list.get()));
    EXPECT_FALSE(VORN_L_ColorSpaceInList(8, list.get()));
    EXPECT_FALSE(VORN_L_ColorSpaceInList(-1, list.get()));
    EXPECT_FALSE(VORN_L_ColorSpaceInList(VORN_CS_RGB, nullptr));
}

}  // namespace
