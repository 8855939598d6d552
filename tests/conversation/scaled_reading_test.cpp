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

TEST_F(ScaledReading, TakesTheHostsMethodOrTheOneThatSuitsTheSizesAndTurns) {
    struct Case {
        std::string name;
        int width, height;  // of the target
        const char* method;
        const char* wish = nullptr;
        int orientation = 0;  // of the loader's picture; the host wants it upright
    };
    std::vector<Case> cases = {
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
    for (const char* method : {"qdscale", "avscale", "blscale", "bcscale", "unheard-of"})
        cases.push_back({"w=50,h=40", 31, 29, method, method});
    for (int orientation = 0; orientation < 8; ++orientation)
        cases.push_back({"w=40,h=24", 17, 13, "bestdown", nullptr, orientation});
    Loader loader;
    for (const Case& c : cases) {
        const std::string name = c.name + ",orient=" + std::to_string(c.orientation);
        SCOPED_TRACE(name + " " + c.method);
        const bool swapped = c.orientation % 2 == 1;
        const Picture expected =
            reoriented(scaled(loadersPicture(name), swapped ? c.height : c.width,
                              swapped ? c.width : c.height, c.method),
                       c.orientation, 0);
        const Picture target = plainPicture(shapeOf(expected));
        ASSERT_TRUE(loader.open(name));
        loader.set(ITAG_Orientation, 0);
        if (c.wish) {
            loader.set(ITAG_ScalerName, c.wish, ITAG_Width, c.width, ITAG_Height, c.height);
            EXPECT_EQ(loader.number(ITAG_Width), c.width);
        }
        ASSERT_TRUE(loader.read(target)) << loader.error();
        EXPECT_TRUE(same(target, expected));
    }
}

TEST_F(ScaledReading, CopiesIndicesAndMixesColors) {
    const char* name = "w=40,h=30,c=1,space=CMAPPED,palette=16";
    Loader loader;
    ASSERT_TRUE(loader.open(name));
    loader.set(ITAG_ColorSpace, VORN_CS_CMAPPED);
    const Picture indices = plainPicture({20, 15, 1, 1});
    ASSERT_TRUE(loader.read(indices));
    EXPECT_TRUE(same(indices, scaled(loadersPicture(name), 20, 15, "fastest")));

    ASSERT_TRUE(loader.open(name));
    loader.set(ITAG_ColorSpace, VORN_CS_RGB);
    const Picture colors = plainPicture({20, 15, 3, 1});
    ASSERT_TRUE(loader.read(colors));
    const Picture palette = loadersPalette(name);
    const Picture full = converted(plainPicture({40, 30, 3, 1}), loadersPicture(name), 7, &palette);
    EXPECT_TRUE(same(colors, scaled(full, 20, 15, "bestdown")));
}

TEST_F(ScaledReading, ReportsProgressAndStopsWhenAskedOrWhenALineIsTooWideForItsBand) {
    Loader loader;
    ASSERT_TRUE(loader.open("w=30000,h=2,c=3"));
    EXPECT_FALSE(loader.read(plainPicture({100, 2, 3, 1})));
    EXPECT_EQ(loader.error(), 29);
    ASSERT_TRUE(loader.reads("w=9,h=9"));
    for (const int stopAt : {0, 4}) {
        Calls calls;
        calls.stopAt = stopAt;
        ASSERT_TRUE(loader.open("w=200,h=300"));
        EXPECT_EQ(loader.read(plainPicture({100, 150, 3, 1}), calls.tags(true, 10)), stopAt == 0);
        EXPECT_EQ(loader.error(), stopAt == 0 ? 0 : 27);
        if (stopAt == 0) {
            EXPECT_EQ(calls.counts.size(), 10u);
            EXPECT_EQ(calls.counts.back(), 10);
        }
        ASSERT_TRUE(loader.reads("w=9,h=9"));
    }
}

}  // namespace
