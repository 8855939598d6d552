#include "formats/settings/description.h"

#include <gtest/gtest.h>

namespace {

using settings::describedSettings;
using settings::Setting;

Setting described(const std::string& line) {
    const std::vector<Setting> all = describedSettings(("Settings=A\nSetting.A=" + line).c_str());
    return all.empty() ? Setting{} : all[0];
}

TEST(Description, ListsSettingsInItsOrder) {
    const std::vector<Setting> all = describedSettings(
        "# a comment\nExtension=x\nsettings= Level , Form,Level,Missing,Even\n"
        "Setting.Even=Switch:ON\nSetting.Form=choice: raw , Plain:plain:How: raw, or not\n"
        "SETTING.LEVEL=number:-5-+9:+03:Level\n");
    ASSERT_EQ(all.size(), 3u);
    EXPECT_EQ(all[0].key, "Level");
    EXPECT_EQ(all[0].standard, "3");
    EXPECT_EQ(all[0].range(), "-5 to 9");
    EXPECT_EQ(all[1].standard, "Plain");
    EXPECT_EQ(all[1].label, "How: raw, or not");
    EXPECT_EQ(all[1].range(), "raw, Plain");
    EXPECT_EQ(all[2].standard, "true");
    EXPECT_EQ(all[2].label, "Even");
    EXPECT_TRUE(describedSettings(nullptr).empty());
    EXPECT_TRUE(describedSettings("Extension=png").empty());
}

TEST(Description, LeavesOutWhatIsNotDescribedAsItShouldBe) {
    for (const char* line :
         {"", "text:a:b", "choice", "choice::a", "choice:a,b:c", "choice:a,,b:a", "choice:a=b:a=b",
          "choice:#a:#a", "number:0-9", "number:0-9:10", "number:9-0:5", "number:0:0",
          "number:0-99999999999:0", "number:a-b:0", "switch:", "switch:maybe"}) {
        EXPECT_EQ(described(line).key, "") << line;
    }
    EXPECT_TRUE(
        describedSettings("Settings=a=b,,'c\nSetting.a=switch:on\nSetting.=switch:on").empty());
}

TEST(Description, AcceptsOnlyWhatTheSettingCanHave) {
    const struct {
        const char* line;
        std::vector<std::pair<const char*, const char*>> accepted;
        std::vector<const char*> refused;
    } cases[] = {
        {"number:-2-10:0",
         {{" 7 ", "7"}, {"+010", "10"}, {"-2", "-2"}},
         {"11", "-3", "", "1.5", "0x1", "+-2", "4294967297"}},
        {"number:-2147483648-2147483647:0", {{"-2147483648", "-2147483648"}}, {}},
        {"choice:one,Two:one", {{"TWO", "Two"}}, {"tw", "one,Two"}},
        {"choice:on,off:on", {}, {"yes"}},
        {"switch:no", {{"On", "true"}, {"yes", "true"}, {"TRUE", "true"}, {"off", "false"}}, {"1"}},
    };
    for (const auto& [line, accepted, refused] : cases) {
        const Setting setting = described(line);
        for (const auto& [value, made] : accepted)
            EXPECT_EQ(setting.accepted(value), made) << value;
        for (const char* value : refused) EXPECT_EQ(setting.accepted(value), std::nullopt) << value;
    }
}

}  // namespace
