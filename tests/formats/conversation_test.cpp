// The installed modules, spoken to by a host.
#include <algorithm>
#include <cerrno>

#include "formats/common/failure.h"
#include "tests/formats/format_files.h"
#include "tests/formats/module_host.h"
#include "tests/formats/png_writer.h"

namespace {

TEST_F(Modules, AnIndexedPngComesOutInColour) {
    PngFile file{.width = 7, .height = 40, .colorType = PNG_COLOR_TYPE_PALETTE, .depth = 2};
    file.palette = {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}};
    const std::string path = files_.write("a.png", file.bytes());
    for (const int32_t bytes : {1, 2}) {
        const Image image("png", VORN_LOADER);
        Pixels pixels(7, 40, 3, bytes);
        ASSERT_TRUE(image.open(path));
        VORN_H_ImageVaSetTags(image.get(), ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, TAG_End);
        ASSERT_TRUE(VORN_H_ImageVaReadData(image.get(), &pixels.buffer, TAG_End));
        for (uint32_t i = 0; i < 7 * 40; ++i) {
            const unsigned entry = file.sample(i % 7, i / 7, 0);
            const png_color color = file.palette[entry];
            const png_byte wanted[] = {color.red, color.green, color.blue};
            for (size_t c = 0; c < 3; ++c)
                ASSERT_EQ(pixels.samples[(3 * i + c) * static_cast<size_t>(bytes)], wanted[c]);
        }
    }
}

TEST_F(Modules, ALoaderGoesOnAfterABadFile) {
    const std::string whole = PngFile{.width = 200, .height = 200}.bytes();
    const std::string good = files_.write("good.png", whole);
    const std::string cut = files_.write("cut.png", whole.substr(0, whole.size() / 2));
    const std::string wide = files_.write(
        "wide.png", PngFile{.width = 98049, .height = 1, .colorType = PNG_COLOR_TYPE_GRAY}.bytes());
    const Image image("png", VORN_LOADER);
    Pixels pixels(200, 200, 3, 1);

    EXPECT_FALSE(image.open(files_.path("missing.png")));
    EXPECT_EQ(image.error(), formats::kCannotOpen);
    EXPECT_EQ(image.subcode(), ENOENT);
    image.close();
    EXPECT_FALSE(image.open(files_.write("text.png", "only a text")));
    EXPECT_EQ(image.error(), formats::kNotThisFormat);
    image.close();
    EXPECT_TRUE(image.open(cut));
    EXPECT_FALSE(VORN_H_ImageVaReadData(image.get(), &pixels.buffer, TAG_End));
    EXPECT_EQ(image.error(), formats::kDamaged);
    image.close();
    EXPECT_FALSE(image.open(wide));
    EXPECT_EQ(image.error(), formats::kUnsupported);
    image.close();
    EXPECT_TRUE(image.open(good));
    EXPECT_TRUE(VORN_H_ImageVaReadData(image.get(), &pixels.buffer, TAG_End));
}

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
    Pixels pixels(49024, 2, 1, 2);
    EXPECT_TRUE(VORN_H_ImageVaReadData(image.get(), &pixels.buffer, TAG_End));
    EXPECT_EQ(std::count(pixels.samples.begin(), pixels.samples.end(), 'x'), 4 * 49024);
}

int32_t stopAtThird(VORN_Image*, VORN_Word counter) {
    return ++*reinterpret_cast<int32_t*>(counter) >= 3;
}

TEST_F(Modules, ASaverReplacesItsTargetOnlyWhenAllLinesHaveCome) {
    for (const char* module : {"pnm", "png"}) {
        SCOPED_TRACE(module);
        const std::string path = files_.write("target.x", "before");
        const Image image(module, VORN_SAVER);
        const Pixels pixels(3000, 100, 3, 1);
        ASSERT_TRUE(image.open(path));
        ASSERT_TRUE(describe(image, pixels, VORN_CS_RGB));
        int32_t blocks = 0;
        EXPECT_FALSE(VORN_H_ImageVaWriteData(image.get(), &pixels.buffer, ITAG_AbortCallback,
                                             reinterpret_cast<VORN_Word>(&stopAtThird),
                                             ITAG_AbortCallbackUserData,
                                             reinterpret_cast<VORN_Word>(&blocks), TAG_End));
        EXPECT_EQ(image.error(), 27);
        EXPECT_EQ(contentOf(path), "before");
        image.close();
        EXPECT_TRUE(save(image, path, pixels)) << image.error();
        EXPECT_GT(contentOf(path).size(), 100u);
        image.close();
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(files_.path()), {}), 1);
    }
}

TEST_F(Modules, ASaverSaysWhyItCannotSaveAndGoesOn) {
    for (const char* module : {"pnm", "png"}) {
        SCOPED_TRACE(module);
        const Image image(module, VORN_SAVER);
        const Pixels pixels(3000, 100, 3, 1);
        EXPECT_FALSE(save(image, files_.path("no/such/directory/a"), pixels));
        EXPECT_EQ(image.error(), formats::kCannotOpen);
        EXPECT_EQ(image.subcode(), ENOENT);
        image.close();
        // Noise, so that the device fills up while data is still coming.
        Pixels noise(3000, 100, 3, 1);
        uint32_t state = 1;
        for (uint8_t& sample : noise.samples)
            sample = static_cast<uint8_t>((state = state * 1103515245 + 12345) >> 16);
        EXPECT_FALSE(save(image, "/dev/full", noise));
        EXPECT_EQ(image.error(), formats::kCannotWrite);
        EXPECT_EQ(image.subcode(), ENOSPC);
        image.close();
        EXPECT_TRUE(save(image, files_.path("a"), pixels)) << image.error();
    }
}

TEST_F(Modules, ASaverReadsTheSettingsOfItsHostsApplication) {
    const UserSettings user;
    const auto head = [this] {
        const Image image("pnm", VORN_SAVER);
        EXPECT_TRUE(save(image, files_.path("a.ppm"), Pixels(1, 1, 3, 1))) << image.error();
        return contentOf(files_.path("a.ppm")).substr(0, 2);
    };
    EXPECT_EQ(head(), "P6");
    VORN_H_RegisterAppName("Paint");
    VORN_H_ModuleStoreOwnParameters("pnm", VORN_SAVER, "Form=plain");
    EXPECT_EQ(head(), "P3");
    VORN_H_RegisterAppName("Draw");
    EXPECT_EQ(head(), "P6");
    VORN_H_RegisterAppName("");
    EXPECT_EQ(head(), "P6");

    user.store("pnm", "Form=text");
    const Image image("pnm", VORN_SAVER);
    EXPECT_FALSE(save(image, files_.write("a.ppm", "before"), Pixels(1, 1, 3, 1)));
    EXPECT_EQ(image.error(), formats::kBadOption);
    EXPECT_EQ(contentOf(files_.path("a.ppm")), "before");
    user.store("pnm", "Form=plain");
    image.close();
    EXPECT_TRUE(save(image, files_.path("a.ppm"), Pixels(1, 1, 3, 1))) << image.error();
}

TEST_F(Modules, ASaverThatCannotHoldTheImageLeavesNoFile) {
    const Image image("png", VORN_SAVER);
    const Pixels pixels(3, 3, 1, 1);
    ASSERT_TRUE(image.open(files_.path("a.png")));
    ASSERT_TRUE(describe(image, pixels, VORN_CS_CMAPPED));  // without a palette
    EXPECT_FALSE(VORN_H_ImageVaWriteData(image.get(), &pixels.buffer, TAG_End));
    EXPECT_EQ(image.error(), formats::kCannotSave);
    image.close();
    EXPECT_TRUE(std::filesystem::is_empty(files_.path()));
}

}  // namespace
