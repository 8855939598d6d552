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

class LoaderChoice : public CatalogueTest {
  protected:
    // Chooses on a thread of its own and leaves the error in error_ and subcode_.
    bool choose(const char* says, const char* loaderName, const char* defaultLoader = "") {
        bool found = false;
        std::snprintf(name_, sizeof name_, "-");
        onNewThread([&] {
            universalAnswer = says;
            vorn::replaceUniversalLoader(says != nullptr ? answer : nullptr);
            VORN_H_ImageSetDefaultLoader(defaultLoader);
            found = VORN_H_ImageGetLoaderName(file_.c_str(), loaderName, name_, sizeof name_);
            error_ = errorCode();
            subcode_ = errorSubcode();
        });
        return found;
    }

    std::string file_ = home_.write("picture", "P6");
    char name_[16] = "";
    int32_t error_ = 0;
    int32_t subcode_ = 0;
};

TEST_F(LoaderChoice, UniversalLoaderIsAskedWhenNoneIsNamed) {
    addModule("Loaders/tiff.exe");
    for (const char* none : {static_cast<const char*>(nullptr), "", "Unv", "unv"}) {
        EXPECT_TRUE(choose("tiff\n", none));
        EXPECT_STREQ(name_, "tiff");
        EXPECT_EQ(error_, 0);
    }
    EXPECT_TRUE(choose("TIFF.EXE", nullptr));
    EXPECT_FALSE(choose("tif", nullptr));
    EXPECT_FALSE(choose("tiffany", nullptr));
    EXPECT_TRUE(choose("tiff", "png", "gif"));
    EXPECT_STREQ(name_, "png");
}

TEST_F(LoaderChoice, LoaderThatIsNotInstalledIsNamed) {
    addModule("Loaders/png");
    EXPECT_FALSE(choose("tiff", nullptr));
    EXPECT_STREQ(name_, "tiff");
    EXPECT_EQ(error_, 15);
    EXPECT_FALSE(choose("a name of 16 cha", nullptr));
    EXPECT_STREQ(name_, "-");
    EXPECT_TRUE(choose("tiff", nullptr, "png"));
    EXPECT_STREQ(name_, "png");
    EXPECT_EQ(error_, 15);

    home_.remove("Loaders");
    EXPECT_FALSE(choose("tiff", nullptr));
    EXPECT_EQ(error_, 20);
    EXPECT_EQ(subcode_, ENOENT);
}

TEST_F(LoaderChoice, FileThatNobodyKnowsGoesToTheDefaultLoader) {
    addModule("Loaders/png");
    for (const char* says : {"", "\n", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(choose(says, nullptr));
        EXPECT_STREQ(name_, "-");
        EXPECT_EQ(error_, 28);
        EXPECT_TRUE(choose(says, nullptr, "raw"));
        EXPECT_STREQ(name_, "raw");
    }
}

TEST_F(LoaderChoice, NamesAreLimited) {
    EXPECT_TRUE(choose("", "fifteen letters"));
    EXPECT_FALSE(choose("", "sixteen letters!"));
    EXPECT_EQ(error_, 16);
    onNewThread([&] {
        char name[100];
        VORN_H_ImageSetDefaultLoader(std::string(90, 'x').c_str());
        vorn::replaceUniversalLoader(answer);
        EXPECT_TRUE(VORN_H_ImageGetLoaderName(file_.c_str(), nullptr, name, sizeof name));
        EXPECT_EQ(name, std::string(79, 'x'));
    });
}

}  // namespace
