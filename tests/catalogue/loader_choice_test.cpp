#include <cerrno>
#include <cstdio>

#include "catalogue/universal_loader.h"
#include "tests/catalogue/catalogue_fixture.h"

namespace {

// What the universal loader says; "" makes it answer false.
thread_local const char* universalAnswer = "";

VORN_Bool answer(const char* /*fileName*/, char* out, int32_t options) {
    EXPECT_EQ(options, 0);
    std::snprintf(out, vorn::platform::kMaxPath, "%s", universalAnswer);
    return *universalAnswer != '\0';
}

using LoaderChoice = CatalogueTest;

// One that is not installed is named where there is room, unless there is a default.
TEST_F(LoaderChoice, IsTheNamedOneThatOfTheUniversalLoaderOrTheDefault) {
    addModule("Loaders/tiff.exe");
    addModule("Loaders/png");
    const std::string file = home_.write("picture", "P6");
    const struct {
        const char *says, *named, *otherwise;
        bool found;
        const char* name;
        int32_t error;
    } cases[] = {{"tiff\n", nullptr, "", true, "tiff", 0},
                 {"tiff\n", "", "", true, "tiff", 0},
                 {"tiff", "unv", "", true, "tiff", 0},
                 {"TIFF.EXE", nullptr, "", true, "TIFF.EXE", 0},
                 {"tiff", "png", "gif", true, "png", 0},
                 {"tiff", "fifteen letters", "", true, "fifteen letters", 0},
                 {"tiff", "sixteen letters!", "", false, "-", 16},
                 {"tif", nullptr, "", false, "tif", 15},
                 {"tiffany", nullptr, "", false, "tiffany", 15},
                 {"a name of 16 cha", nullptr, "", false, "-", 15},
                 {"gif", nullptr, "png", true, "png", 15},
                 {"", nullptr, "", false, "-", 28},
                 {"\n", nullptr, "", false, "-", 28},
                 {nullptr, nullptr, "", false, "-", 28},
                 {nullptr, nullptr, "raw", true, "raw", 28}};
    for (const auto& c : cases) {
        onNewThread([&] {
            char name[16] = "-";
            universalAnswer = c.says;
            vorn::replaceUniversalLoader(c.says ? answer : nullptr);
            VORN_H_ImageSetDefaultLoader(c.otherwise);
            EXPECT_EQ(VORN_H_ImageGetLoaderName(file.c_str(), c.named, name, sizeof name), c.found);
            EXPECT_STREQ(name, c.name) << &c - cases;
            EXPECT_EQ(errorCode(), c.error) << &c - cases;
        });
    }
    home_.remove("Loaders");
    onNewThread([&] {
        char name[100];
        vorn::replaceUniversalLoader(answer);
        VORN_H_ImageSetDefaultLoader(std::string(90, 'x').c_str());
        EXPECT_TRUE(VORN_H_ImageGetLoaderName(file.c_str(), nullptr, name, sizeof name));
        EXPECT_EQ(name, std::string(79, 'x'));
        universalAnswer = "tiff";
        EXPECT_TRUE(VORN_H_ImageGetLoaderName(file.c_str(), nullptr, name, sizeof name));
        EXPECT_EQ(errorCode(), 20);
        EXPECT_EQ(errorSubcode(), ENOENT);
    });
}

}  // namespace
