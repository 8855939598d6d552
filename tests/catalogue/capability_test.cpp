#include "catalogue/capability.h"

#include "support/memory.h"
#include "tests/catalogue/catalogue_fixture.h"

namespace {

using Capability = CatalogueTest;

constexpr char kTiff[] =
    "Alpha = TRUE\nAlphaAlways=true\nDevice=yes\nAnimation=true\n"
    "ColorSpaces=RGB,Gray\nSizes=1x1-9x9\nExtension=tif\nExtension=tiff\n"
    "LongModuleName=\"Tagged files\"\nBitsPerChannel=\n";

TEST_F(Capability, FileIsReadForTheModuleAndAnswersQuestions) {
    home_.write("Savers/tiff.cap", kTiff);
    home_.write("Savers/tiff.so", "");
    onNewThread([] {
        EXPECT_TRUE(VORN_L_GetParseCap("tiff", VORN_SAVER));
        EXPECT_TRUE(VORN_L_AlphaAllowed());
        EXPECT_TRUE(VORN_L_AlphaAlways());
        EXPECT_FALSE(VORN_L_Device());
        EXPECT_TRUE(VORN_L_Animation());
        EXPECT_STREQ(VORN_L_GetSizes(), "1x1-9x9");
        EXPECT_STREQ(VORN_L_GetSaverDepths(), "");
        std::thread([] { EXPECT_STREQ(VORN_L_GetDefaultExtension(), ""); }).join();

        int32_t alpha = -1, hasCap = -1, isLibrary = -1;
        char* text = nullptr;
        const char *name = nullptr, *extension = nullptr;
        char **colorSpaces = nullptr, **depths = nullptr;
        EXPECT_TRUE(VORN_H_ImageVaQueryModule(
            "tiff", VORN_SAVER, MTAG_Alpha, &alpha, ITAG_Width, nullptr, MTAG_HasCapFile, &hasCap,
            MTAG_ModuleIsDLL, &isLibrary, MTAG_CapString, &text, MTAG_LongModuleName, &name,
            MTAG_Extension, &extension, MTAG_ColorSpaces, &colorSpaces, MTAG_BitsPerChannel,
            &depths, TAG_End));
        EXPECT_EQ(alpha + hasCap + isLibrary, 3);
        EXPECT_STREQ(text, kTiff);
        EXPECT_STREQ(name, "Tagged files");
        EXPECT_STREQ(extension, "tif");
        EXPECT_EQ(taken(colorSpaces), (Strings{"RGB", "Gray"}));
        EXPECT_EQ(depths, nullptr);
        FreeMemory(text);
    });
}

TEST_F(Capability, ModuleWithoutAFileHasTheDefaults) {
    onNewThread([] {
        int32_t hasCap = -1, isLibrary = -1, device = -1;
        char* text = reinterpret_cast<char*>(&hasCap);
        char **colorSpaces = nullptr, **sizes = nullptr, **depths = nullptr;
        EXPECT_TRUE(VORN_H_ImageVaQueryModule(
            "raw", VORN_LOADER, MTAG_HasCapFile, &hasCap, MTAG_ModuleIsDLL, &isLibrary, MTAG_Device,
            &device, MTAG_CapString, &text, MTAG_ColorSpaces, &colorSpaces, MTAG_Sizes, &sizes,
            MTAG_BitsPerChannel, &depths, TAG_End));
        EXPECT_TRUE(hasCap == 0 && isLibrary == 0 && device == 0 && !text);
        EXPECT_STREQ(VORN_L_GetDefaultExtension(), "");
        EXPECT_EQ(taken(colorSpaces), Strings{"RGB"});
        EXPECT_EQ(taken(sizes), Strings{"1x1-65535x65535"});
        EXPECT_EQ(taken(depths), Strings{"8"});
        EXPECT_EQ(errorCode(), 0);
    });
}

TEST_F(Capability, FileIsFoundByEveryNameOfTheModule) {
    home_.write("Loaders/abc.cap", "mine");
    home_.write("Savers/abc.cap", "the saver's");
    home_.write("Savers/only.cap", "among the savers");
    home_.write("Loaders/lib.dll.cap", "whole name");
    home_.write("Loaders/.exe.cap", "no name before the ending");
    onNewThread([] {
        const auto text = [](const char* name, int32_t type) {
            const vorn::Owned<char> found(VORN_L_GetCapString(name, type));
            return std::string(found ? found.get() : "none");
        };
        EXPECT_EQ(text("abc", VORN_LOADER), "mine");
        EXPECT_EQ(text("ABC.Exe", VORN_LOADER), "mine");
        EXPECT_EQ(text("abc.exe", VORN_SAVER), "the saver's");
        EXPECT_EQ(text("only.exe", VORN_LOADER), "among the savers");
        EXPECT_EQ(text("lib.dll", VORN_LOADER), "whole name");
        EXPECT_EQ(text(".exe", VORN_LOADER), "no name before the ending");
        EXPECT_EQ(text("abc", 3), "none");
        EXPECT_EQ(text(std::string(5000, 'x').c_str(), VORN_LOADER), "none");
    });
    EXPECT_TRUE(VORN_L_CapAvailable(home_.path("Loaders").c_str(), "abc"));
    EXPECT_FALSE(VORN_L_CapAvailable(home_.path("Loaders").c_str(), "abc.exe"));
}

}  // namespace
