// The installed modules, spoken to by a host.
#include <algorithm>

#include "tests/formats/module_host.h"

namespace {

TEST_F(Modules, ALineTooWideForABlockIsRefusedAtOnce) {
    const auto grey = [&](const std::string& width, size_t samples) {
        return files_.write("a.pgm",
                            "P5\n" + width + " 2\n65535\n" + std::string(2 * 2 * samples, 'x'));
    };
    const Image image("pnm", VORN_LOADER);
    EXPECT_FALSE(image.open(grey("49025", 49025)));
    EXPECT_EQ(image.error(), formats::kTooWideForBlock);
    image.close();
    ASSERT_TRUE(image.open(grey("49024", 49024)));
    const Pixels pixels(49024, 2, 1, 2);
    EXPECT_TRUE(image.read(pixels));
    EXPECT_EQ(std::count(pixels.samples.begin(), pixels.samples.end(), 'x'), 4 * 49024);
}

TEST_F(Modules, ASaverReplacesItsTargetOnlyWhenAllLinesHaveCome) {
    for (const char* module : {"pnm", "png"}) {
        SCOPED_TRACE(module);
        const std::string path = files_.write("target.x", "before");
        const Image image(module, VORN_SAVER);
        const Pixels pixels(3000, 100, 3, 1);
        ASSERT_TRUE(image.open(path));
        ASSERT_TRUE(describe(image, pixels, VORN_CS_RGB));
        const VORN_AbortCallback stopAtThird = [](VORN_Image*, VORN_Word counter) {
            return int32_t{++*reinterpret_cast<int32_t*>(counter) >= 3};
        };
        int32_t blocks = 0;
        EXPECT_FALSE(VORN_H_ImageVaWriteData(image.get(), &pixels.buffer, ITAG_AbortCallback,
                                             VORN_Word(stopAtThird), ITAG_AbortCallbackUserData,
                                             VORN_Word(&blocks), TAG_End));
        EXPECT_EQ(image.error(), 27);
        EXPECT_EQ(contentOf(path), "before");
        image.close();
        EXPECT_TRUE(save(image, path, pixels)) << image.error();
        EXPECT_GT(contentOf(path).size(), 100u);
        image.close();
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(files_.path()), {}), 1);
    }
}

TEST_F(Modules, ASaverReadsTheSettingsOfItsHostsApplication) {
    const std::string path = files_.path("a.ppm");
    const Image image("pnm", VORN_SAVER);
    const auto head = [&](const char* application) {
        VORN_H_RegisterAppName(application);
        const Image started("pnm", VORN_SAVER);
        EXPECT_TRUE(save(started, path, Pixels(1, 1, 3, 1))) << started.error();
        return contentOf(path).substr(0, 2);
    };
    EXPECT_EQ(head("Paint"), "P6");
    VORN_H_ModuleStoreOwnParameters("pnm", VORN_SAVER, "Form=plain");
    EXPECT_EQ(head("Paint"), "P3");
    EXPECT_EQ(head("Draw"), "P6");
    EXPECT_EQ(head(""), "P6");

    user_.store("pnm", "Form=text");
    EXPECT_FALSE(save(image, path, Pixels(1, 1, 3, 1)));
    EXPECT_EQ(image.error(), formats::kBadOption);
    EXPECT_EQ(contentOf(path).substr(0, 2), "P6") << "as it was";
    user_.store("pnm", "Form=plain");
    image.close();
    EXPECT_TRUE(save(image, path, Pixels(1, 1, 3, 1))) << image.error();
}

}  // namespace
