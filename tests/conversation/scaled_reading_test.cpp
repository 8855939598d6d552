// Reads into memory of another size than the picture has.
#include <vorn/scaler.h>

#include "tests/conversation/host.h"

namespace {

using ScaledReading = ConversationTest;

// The whole picture through a scaler at once: what the streamed read must give to the sample.
Picture scaled(const Picture& source, int width, int height, const char* method) {
    Shape shape = shapeOf(source);
    shape.width = width;
    shape.height = height;
    const Picture target = plainPicture(shape);
    VORN_Scaler* scaler = VORN_S_AllocScaler(method);
    EXPECT_EQ(VORN_S_InitScale(scaler, source.record.height, height, &source.record, &target.record,
                               nullptr, nullptr),
              VORN_S_READY);
    int32_t result = 0;
    do {
        result = VORN_S_SendData(scaler);
    } while (result == VORN_S_FILL_SOURCE || result == VORN_S_TAKE_DESTINATION);
    EXPECT_EQ(result, VORN_S_FINISHED);
    VORN_S_FreeScaler(scaler);
    return target;
}

void expectScaled(
    Loader& loader, const char* name, int width, int height, const char* method, const char* wish) {
    const Picture expected = scaled(loadersPicture(name), width, height, method);
    const Picture target = plainPicture(shapeOf(expected));
    ASSERT_TRUE(loader.open(name));
    if (wish) {
        VORN_H_ImageVaSetTags(loader, ITAG_ScalerName, VORN_Word(wish), ITAG_Width,
                              VORN_Word(width), ITAG_Height, VORN_Word(height), TAG_End);
        EXPECT_EQ(loader.number(ITAG_Width), width);
    }
    ASSERT_TRUE(loader.read(target)) << name << ": " << loader.code();
    EXPECT_TRUE(same(target, expected)) << name << ' ' << method;
    loader.closeImage();
}

TEST_F(ScaledReading, TakesTheMethodThatSuitsTheSizes) {
    const struct {
        const char* name;
        int width, height;
        const char* method;
    } cases[] = {
        {"w=1,h=1", 5, 4, "fastest"},
        {"w=2,h=2", 5, 5, "blscale"},
        {"w=100,h=100", 50, 50, "bestdown"},
        {"w=100,h=100", 150, 80, "bestup"},
        {"w=40,h=30", 1, 60, "blscale"},
        {"w=40,h=30", 1, 1, "bestdown"},
        {"w=1,h=40", 3, 80, "blscale"},
        {"w=300,h=500,c=4,b=2", 77, 31, "bestdown"},
        {"w=900,h=700,c=3", 301, 701, "bestup"},
        {"w=33,h=20,c=8", 34, 21, "bestup"},
    };
    Loader loader;
    for (const auto& c : cases) expectScaled(loader, c.name, c.width, c.height, c.method, nullptr);
}

TEST_F(ScaledReading, TakesTheMethodThatTheHostNames) {
    Loader loader;
    for (const char* method : {"qdscale", "avscale", "blscale", "bcscale", "unheard-of"})
        expectScaled(loader, "w=50,h=40,c=3", 31, 29, method, method);
}

TEST_F(ScaledReading, TurnsWhatItScales) {
    Loader loader;
    for (int orientation = 0; orientation < 8; ++orientation) {
        const std::string name = "w=40,h=24,c=3,orient=" + std::to_string(orientation);
        const bool swapped = orientation % 2 == 1;
        const Picture upright = reoriented(
            scaled(loadersPicture(name), swapped ? 13 : 17, swapped ? 17 : 13, "bestdown"),
            orientation, 0);
        ASSERT_TRUE(loader.open(name));
        VORN_H_ImageVaSetTags(loader, ITAG_Orientation, VORN_Word(0), TAG_End);
        const Picture target = plainPicture({17, 13, 3, 1});
        ASSERT_TRUE(loader.read(target)) << name << ": " << loader.code();
        EXPECT_TRUE(same(target, upright)) << name;
        loader.closeImage();
    }
}

TEST_F(ScaledReading, CopiesIndicesAndMixesColors) {
    const char* name = "w=40,h=30,c=1,space=CMAPPED,palette=16";
    Loader loader;
    ASSERT_TRUE(loader.open(name));
    VORN_H_ImageVaSetTags(loader, ITAG_ColorSpace, VORN_Word(VORN_CS_CMAPPED), TAG_End);
    const Picture indices = plainPicture({20, 15, 1, 1});
    ASSERT_TRUE(loader.read(indices));
    EXPECT_TRUE(same(indices, scaled(loadersPicture(name), 20, 15, "fastest")));
    loader.closeImage();

    ASSERT_TRUE(loader.open(name));
    VORN_H_ImageVaSetTags(loader, ITAG_ColorSpace, VORN_Word(VORN_CS_RGB), TAG_End);
    const Picture colors = plainPicture({20, 15, 3, 1});
    ASSERT_TRUE(loader.read(colors));
    const Picture palette = loadersPalette(name);
    const Picture full = converted(plainPicture({40, 30, 3, 1}), loadersPicture(name), 7, &palette);
    EXPECT_TRUE(same(colors, scaled(full, 20, 15, "bestdown")));
}

TEST_F(ScaledReading, ReportsProgressAndStopsWhenAsked) {
    Loader loader;
    for (const int stopAt : {0, 4}) {
        Calls calls;
        calls.stopAt = stopAt;
        ASSERT_TRUE(loader.open("w=200,h=300"));
        EXPECT_EQ(loader.read(plainPicture({100, 150, 3, 1}), calls.tags(true, 10)), stopAt == 0);
        EXPECT_EQ(loader.code(), stopAt == 0 ? 0 : 27);
        if (stopAt == 0) {
            EXPECT_EQ(calls.counts.size(), 10u);
            EXPECT_EQ(calls.counts.back(), 10);
        }
        loader.closeImage();
        ASSERT_TRUE(loader.reads("w=9,h=9"));
        loader.closeImage();
    }
}

TEST_F(ScaledReading, RefusesALineThatIsTooWideForItsBand) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=30000,h=2,c=3"));
    EXPECT_FALSE(loader.read(plainPicture({100, 2, 3, 1})));
    EXPECT_EQ(loader.code(), 29);
    loader.closeImage();
    ASSERT_TRUE(loader.reads("w=9,h=9"));
}

}  // namespace
