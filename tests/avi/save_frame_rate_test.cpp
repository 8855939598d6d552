#include <gtest/gtest.h>
#include <vorn/host.h>

#include "avi/preferences.h"
#include "tests/scratch_home.h"

namespace {

class SaveFrameRate : public testing::Test {
  protected:
    static double after(const std::string& text, const char* asked = "Flic") {
        EXPECT_TRUE(VORN_H_ModuleStoreParameters("FLIC", 2, text.c_str()));
        return VORN_H_GetSaveFrameRate(asked);
    }

    ScratchDirectory user_;
    ScopedVariable config_{"XDG_CONFIG_HOME", user_.path()};
};

TEST_F(SaveFrameRate, StandsFirstInTheParametersOrIsTheDefault) {
    EXPECT_EQ(VORN_H_GetSaveFrameRate("Flic"), 15.0);
    EXPECT_EQ(VORN_H_GetSaveFrameRate(""), 15.0);
    EXPECT_EQ(VORN_H_GetSaveFrameRate(nullptr), 15.0);
    EXPECT_EQ(after("FrameRate=25\nLoop=1"), 25.0);
    EXPECT_EQ(after("FrameRate= -3.5"), -3.0);
    EXPECT_EQ(after("FrameRate=0"), 0.0);
    for (const char* text : {"", "FrameRate=", "FrameRate=fast", "framerate=25", " FrameRate=25",
                             "Loop=1\nFrameRate=25", "FrameRate =25", "FrameRate=99999999999",
                             "FrameRate=99999999999999999999999", "FrameRate=-2147483649"}) {
        EXPECT_EQ(after(text), 15.0) << text;
    }
}

TEST_F(SaveFrameRate, EndingsAndCaseOfTheNameDontCount) {
    EXPECT_EQ(after("FrameRate=24", "flic.exe"), 24.0);
    EXPECT_EQ(after("FrameRate=24", "FLIC.tar.dll"), 24.0);
    EXPECT_EQ(after("FrameRate=24", "Flicker"), 15.0);
    const std::string longName(31, 'n');
    ASSERT_TRUE(VORN_H_ModuleStoreParameters(longName.c_str(), 2, "FrameRate=12"));
    EXPECT_EQ(VORN_H_GetSaveFrameRate((longName + "and more").c_str()), 12.0);
    EXPECT_EQ(VORN_H_GetSaveFrameRate((longName.substr(1) + ".exe").c_str()), 15.0);
}

TEST_F(SaveFrameRate, BothAviSaversShareOnePreferenceString) {
    ASSERT_TRUE(VORN_H_ModuleStoreParameters("AVI16", 2, "FrameRate=1"));
    ASSERT_TRUE(VORN_H_ModuleStoreParameters("AVI", 2, vorn::writeAviPreferences({}, 30)));
    for (const char* name : {"AVI", "avi.exe", "AVI16", "avi32.dll", "Avi32"}) {
        EXPECT_EQ(VORN_H_GetSaveFrameRate(name), 30.0) << name;
    }
    EXPECT_EQ(VORN_H_GetSaveFrameRate("AVI64"), 15.0);
    ASSERT_TRUE(VORN_H_ModuleStoreParameters("AVI", 2, "FrameRate=25"));
    EXPECT_EQ(VORN_H_GetSaveFrameRate("AVI32"), 15.0);
}

}  // namespace
