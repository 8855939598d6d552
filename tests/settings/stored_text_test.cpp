#include "formats/settings/stored_text.h"

#include <gtest/gtest.h>

namespace {

using namespace settings;

const std::vector<Setting> kDescribed = describedSettings(
    "Settings=Level,Form,Even\nSetting.Level=number:0-9:6\nSetting.Form=choice:raw,plain:raw\n"
    "Setting.Even=switch:off");

std::string shown(const char* text) {
    std::string all;
    for (const Value& value : valuesIn(text, kDescribed)) {
        all += value.text + (!value.isValid ? "?" : value.isStored ? "!" : "") + ' ';
    }
    return all;
}

TEST(StoredText, GivesTheStoredValuesAndTheDefaultsOfTheOthers) {
    EXPECT_EQ(shown(nullptr), "6 raw false ");
    EXPECT_EQ(shown("form = PLAIN \nOther=1\nLevel=+2\nLevel=3"), "2! plain! false ");
    EXPECT_EQ(shown("Level=10\nForm=raw, plain\nEven=perhaps"), "10? raw, plain? perhaps? ");
    EXPECT_EQ(shown("Level=\nForm\n#Even=on"), "6 raw false ");
}

TEST(StoredText, KeepsAllOtherLinesWhenASettingIsChanged) {
    EXPECT_EQ(withValue("", "Level", "3"), "Level=3\n");
    EXPECT_EQ(withValue("Other=1\nlevel = 9\nForm=raw\nLEVEL=2", "Level", "3"),
              "Other=1\nLevel=3\nForm=raw\n");
    EXPECT_EQ(withValue("no key\n\n=\n", "Level", "3"), "no key\n=\nLevel=3\n");
    EXPECT_EQ(withValue("Levels=1\n#Level=1", "Level", "3"), "Levels=1\n#Level=1\nLevel=3\n");
    EXPECT_EQ(otherLines("a\nLevel=1\nFORM =x\nb=2\n", kDescribed),
              (std::vector<std::string>{"a", "b=2"}));
}

TEST(StoredText, BeginsWithTheFrameRate) {
    EXPECT_EQ(withValue("Level=1\nLoop=2", "FrameRate", "25"), "FrameRate=25\nLevel=1\nLoop=2\n");
    EXPECT_EQ(withValue("Loop=2\nframerate=25", "Level", "1"), "framerate=25\nLoop=2\nLevel=1\n");
}

}  // namespace
