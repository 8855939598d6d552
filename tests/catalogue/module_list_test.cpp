#include <cerrno>

#include "tests/catalogue/catalogue_fixture.h"

namespace {

using ModuleList = CatalogueTest;

int32_t count(int32_t type) {
    int32_t modules = -1;
    EXPECT_TRUE(VORN_H_ImageVaQueryModuleHandler(type, MTAG_NumModules, &modules, TAG_End));
    return modules;
}

TEST_F(ModuleList, HoldsProgramsInOrder) {
    for (const char* name : {"tiff.exe", "Bmp.EXE", "readme.txt", "tiff.cap", "raw", ".hidden",
                             "two.dots.exe", ".exe"}) {
        addModule(std::string("Loaders/") + name);
    }
    home_.makeDirectory("Loaders/old");
    std::filesystem::create_symlink("old", home_.path("Loaders/link"));  // a directory too
    std::filesystem::create_symlink("raw", home_.path("Loaders/same"));
    onNewThread([] {
        EXPECT_EQ(count(VORN_LOADER), 5);
        char** list = nullptr;
        const char* directory = nullptr;
        EXPECT_TRUE(VORN_H_ImageVaQueryModuleHandler(VORN_LOADER, MTAG_ModuleList, &list,
                                                     ITAG_Width, nullptr, MTAG_ModuleDirectory,
                                                     &directory, TAG_End));
        EXPECT_EQ(taken(list), (Strings{"Bmp", "raw", "same", "tiff", "two.dots"}));
    });
}

TEST_F(ModuleList, DirectoryHasItsRealName) {
    home_.remove("Savers");
    home_.makeDirectory("savers");
    home_.variable.set(home_.path() + "/");
    onNewThread([&] {
        const char *loaders = nullptr, *savers = nullptr;
        VORN_H_ImageVaQueryModuleHandler(VORN_LOADER, MTAG_ModuleDirectory, &loaders, TAG_End);
        VORN_H_ImageVaQueryModuleHandler(VORN_SAVER, MTAG_ModuleDirectory, &savers, TAG_End);
        EXPECT_EQ(loaders, home_.path("Loaders"));
        EXPECT_EQ(savers, home_.path("savers"));
    });
}

TEST_F(ModuleList, EmptyDirectoryIsCountedAgain) {
    onNewThread([&] {
        char* nothing = nullptr;
        char** list = &nothing;
        int32_t untouched = -1;
        EXPECT_EQ(count(VORN_LOADER), 0);
        EXPECT_EQ(errorCode(), 52);
        EXPECT_FALSE(VORN_H_ImageVaQueryModuleHandler(VORN_LOADER, MTAG_ModuleList, &list,
                                                      MTAG_NumModules, &untouched, TAG_End));
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(untouched, -1);
        addModule("Loaders/raw");
        EXPECT_EQ(count(VORN_LOADER), 1);
        addModule("Loaders/second");
        EXPECT_EQ(count(VORN_LOADER), 1) << "counted once a thread";
    });
}

TEST_F(ModuleList, MissingDirectoryIsToldWithTheSystemsNumber) {
    home_.remove("Savers");
    onNewThread([] {
        EXPECT_EQ(count(VORN_SAVER), 0);
        EXPECT_EQ(errorCode(), 51);
        EXPECT_EQ(errorSubcode(), ENOENT);
        char** list = nullptr;
        EXPECT_FALSE(VORN_H_ImageVaQueryModuleHandler(3, MTAG_ModuleList, &list, TAG_End));
    });
}

TEST_F(ModuleList, NamesMustFitTheBuffer) {
    onNewThread([&] {
        const std::string path = home_.path("Savers") + "/png";
        std::vector<char> buffer(path.size() + 1);
        const auto size = static_cast<int32_t>(buffer.size());
        EXPECT_TRUE(VORN_H_ModuleGetName("png", VORN_SAVER, buffer.data(), size));
        EXPECT_EQ(buffer.data(), path);
        EXPECT_FALSE(VORN_H_ModuleGetName("png", 0, buffer.data(), size));
        EXPECT_FALSE(VORN_H_ModuleGetName(nullptr, VORN_SAVER, buffer.data(), size));
        EXPECT_EQ(errorCode(), 0);
        EXPECT_FALSE(VORN_H_ModuleGetName("png", VORN_SAVER, buffer.data(), size - 1));
        EXPECT_EQ(errorCode(), 16);

        EXPECT_TRUE(VORN_H_ImageGetSaverName("PnG", 4, buffer.data()));
        EXPECT_STREQ(buffer.data(), "PnG");
        EXPECT_FALSE(VORN_H_ImageGetSaverName(nullptr, 4, buffer.data()));
        VORN_L_SetErrorCode(nullptr, 0, 0);
        EXPECT_FALSE(VORN_H_ImageGetSaverName("PnG", 3, buffer.data()));
        EXPECT_EQ(errorCode(), 16);
    });
}

}  // namespace
