#include <gtest/gtest.h>

#include <thread>

#include "tests/pixels/transfer_rig.h"
#include "tests/scratch_home.h"

namespace vorn::test {
namespace {

class Handle {
  public:
    explicit Handle(int type)
        : image(VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(type), TAG_End)) {}
    ~Handle() { VORN_L_ImageDestroyHandle(image); }
    Handle(const Handle&) = delete;

    Handle& module(uint32_t id, int value) {
        EXPECT_TRUE(ImageVaAddTags(image, id, VORN_Word(value), TAG_End));
        return *this;
    }
    Handle& host(uint32_t id, int value) {
        EXPECT_TRUE(VORN_H_ImageVaSetTags(image, id, VORN_Word(value), TAG_End));
        return *this;
    }
    Handle& moduleSize(int width, int height) {
        return module(ITAG_Width, width).module(ITAG_Height, height);
    }
    Handle& hostSize(int width, int height) {
        return host(ITAG_Width, width).host(ITAG_Height, height);
    }
    bool prepare() { return VORN_L_PrepareTransfer(image) != 0; }
    int error() const { return VORN_ErrorPairCode(VORN_H_ImageGetError(image)); }
    std::pair<int, int> output() const { return {image->outputWidth, image->outputHeight}; }
    std::pair<int, int> answered() {
        int32_t width = 0, height = 0;
        EXPECT_TRUE(VORN_H_ImageVaGetTags(image, ITAG_Width, VORN_Word(&width), ITAG_Height,
                                          VORN_Word(&height), TAG_End));
        return {width, height};
    }

    VORN_Image* image;
};

using Size = std::pair<int, int>;

TEST(PrepareTransfer, NeedsAPossibleSize) {
    Handle none(VORN_LOADER);
    EXPECT_FALSE(none.module(ITAG_Width, 5).prepare());
    EXPECT_EQ(none.error(), 34);

    for (const Size& size : {Size{0, 5}, Size{5, -1}, Size{65537, 1}}) {
        Handle handle(VORN_LOADER);
        EXPECT_FALSE(handle.moduleSize(3, 3).hostSize(size.first, size.second).prepare());
        EXPECT_EQ(handle.error(), 26);
        EXPECT_FALSE(handle.image->prepared);
    }
    Handle other(3);
    EXPECT_FALSE(other.prepare());
    EXPECT_EQ(other.error(), 30);
}

TEST(PrepareTransfer, KeepsTheOutputSizeInTheLoadersTerms) {
    Handle handle(VORN_LOADER);
    handle.moduleSize(10, 20).module(ITAG_Orientation, 0).host(ITAG_Orientation, 1);
    ASSERT_TRUE(handle.prepare());
    EXPECT_TRUE(handle.image->axesSwapped);
    EXPECT_FALSE(handle.image->sizeDiffers);
    EXPECT_EQ(handle.output(), Size(10, 20));
    EXPECT_EQ(handle.answered(), Size(20, 10));

    handle.hostSize(40, 30);  // as the host sees it
    ASSERT_TRUE(handle.prepare());
    EXPECT_TRUE(handle.image->sizeDiffers);
    EXPECT_EQ(handle.output(), Size(30, 40));
    EXPECT_EQ(handle.answered(), Size(40, 30));
}

TEST(PrepareTransfer, KeepsTheOutputSizeInTheSaversTerms) {
    Handle handle(VORN_SAVER);
    handle.hostSize(10, 20).host(ITAG_Orientation, 1).module(ITAG_Orientation, 0);
    EXPECT_EQ(handle.answered(), Size(10, 20));
    ASSERT_TRUE(handle.prepare());
    EXPECT_TRUE(handle.image->axesSwapped);
    EXPECT_FALSE(handle.image->sizeDiffers);
    EXPECT_EQ(handle.output(), Size(20, 10));
    EXPECT_EQ(handle.answered(), Size(10, 20));
}

TEST(PrepareTransfer, ChoosesTheSameCorrectionForReadingAndWriting) {
    for (int ofModule = 0; ofModule < 8; ofModule++) {
        for (int ofHost = 0; ofHost < 8; ofHost++) {
            Handle loader(VORN_LOADER), saver(VORN_SAVER);
            loader.moduleSize(2, 3).module(ITAG_Orientation, ofModule);
            loader.host(ITAG_Orientation, ofHost);
            saver.hostSize(2, 3).host(ITAG_Orientation, ofHost);
            saver.module(ITAG_Orientation, ofModule);
            ASSERT_TRUE(loader.prepare() && saver.prepare());
            EXPECT_EQ(loader.image->orientation, saver.image->orientation)
                << ofModule << " and " << ofHost;
        }
    }
}

TEST(PrepareTransfer, ConvertsColorsThatTheHostNames) {
    Handle handle(VORN_LOADER);
    handle.moduleSize(2, 2).module(ITAG_ColorSpace, VORN_CS_RGB);
    ASSERT_TRUE(handle.prepare());
    EXPECT_EQ(handle.image->colorConversion, 0u);
    EXPECT_EQ(handle.image->targetColorSpace, -1);
    handle.host(ITAG_ColorSpace, VORN_CS_GRAY);
    ASSERT_TRUE(handle.prepare());
    EXPECT_EQ(handle.image->colorConversion, 1u);
}

// A saver whose picture has a colour space: what it is told, by its capability file.
struct SaverColors {
    bool prepared;
    int target;
    int code;
    int error;
};
SaverColors saverColors(const std::string& moduleName, int colorSpace) {
    SaverColors colors{};
    std::thread([&] {  // finds the home directory of this test
        Handle handle(VORN_SAVER);
        VORN_H_ImageVaSetTags(handle.image, MTAG_ModuleName, VORN_Word(moduleName.c_str()),
                              TAG_End);
        handle.hostSize(2, 2).host(ITAG_ColorSpace, colorSpace);
        colors.prepared = handle.prepare();
        colors.target = handle.image->targetColorSpace;
        colors.code = static_cast<int>(handle.image->colorConversion);
        colors.error = handle.error();
    })
        .join();
    return colors;
}

TEST(PrepareTransfer, SendsASaverColorsThatItKnows) {
    const ScratchHome home;
    home.write("Savers/gray.cap", "ColorSpaces=gray,CMYK\n");
    home.write("Savers/odd.cap", "ColorSpaces=Lab\n");
    const std::string gray = home.path("Savers/gray");
    const SaverColors converted = saverColors(gray, VORN_CS_RGB);
    EXPECT_TRUE(converted.prepared);
    EXPECT_EQ(converted.target, VORN_CS_GRAY);
    EXPECT_EQ(converted.code, 1);
    const SaverColors kept = saverColors(gray, VORN_CS_CMYK);
    EXPECT_EQ(kept.target, VORN_CS_CMYK);
    EXPECT_EQ(kept.code, 0);
    const SaverColors unknown = saverColors(home.path("Savers/odd"), VORN_CS_RGB);
    EXPECT_FALSE(unknown.prepared);
    EXPECT_EQ(unknown.error, 17);
    EXPECT_EQ(saverColors("no-such-file", VORN_CS_GRAY).target, VORN_CS_RGB) << "the default";
}

TEST(PrepareTransfer, ForgetsTheImageBefore) {
    Handle handle(VORN_LOADER);
    handle.moduleSize(10, 20).module(ITAG_Orientation, 0).module(ITAG_ColorSpace, VORN_CS_RGB);
    handle.host(ITAG_Orientation, 3).host(ITAG_ColorSpace, VORN_CS_GRAY).hostSize(5, 5);
    ASSERT_TRUE(handle.prepare());
    ASSERT_NE(VORN_L_ImageResetHandle(handle.image), nullptr);
    ASSERT_TRUE(handle.moduleSize(10, 20).prepare());
    EXPECT_EQ(handle.image->orientation, nullptr);
    EXPECT_FALSE(handle.image->axesSwapped);
    EXPECT_FALSE(handle.image->sizeDiffers);
    EXPECT_EQ(handle.image->colorConversion, 0u);
    EXPECT_EQ(handle.image->targetColorSpace, -1);
}

}  // namespace
}  // namespace vorn::test
