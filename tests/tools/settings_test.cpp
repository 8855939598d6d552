#include "tests/tools/tool.h"

namespace {

class Settings : public testing::Test {
  protected:
    static json shown(const Arguments& arguments) {
        return shownAsJson(joined({"settings"}, arguments));
    }

    static json value(const json& module, size_t setting) {
        return module["settings"][setting]["value"];
    }

    void store(const std::string& file, const std::string& text) const {
        user_.write("vorn/" + file, text);
    }

    ScratchDirectory user_;
    ScopedVariable config_{"XDG_CONFIG_HOME", user_.path()};
};

TEST_F(Settings, AreShownWithDefaultsAndStored) {
    const json before = shown({"PNG"});
    EXPECT_EQ(before["settings"][0]["name"], "CompressionLevel");
    EXPECT_EQ(before["settings"][0]["default"], "6");
    EXPECT_EQ(before["settings"][0]["most"], 9);
    EXPECT_EQ(before["settings"][1]["choices"][0], "auto");
    EXPECT_EQ(before["settings"][3]["stored"], false);
    EXPECT_TRUE(before["stored"].is_null());

    store("savers/png.txt", "Other=1,Filter=nonsense");
    const Ended set = vorn({"settings", "png", "compressionlevel=+9", " interlace = yes"});
    expectDone(set);
    EXPECT_EQ(set.out, "");
    const json after = shown({"png"});
    EXPECT_EQ(after["stored"], "Other=1\nFilter=nonsense\nCompressionLevel=9\nInterlace=true\n");
    EXPECT_EQ(after["settings"][1]["valid"], false);
    const std::string text = vorn({"settings", "png"}).out;
    for (const char* part : {"9 ", "default 6", "not valid: auto, none", "also stored: Other=1"}) {
        EXPECT_NE(text.find(part), std::string::npos) << text;
    }
    EXPECT_EQ(value(shown({"png", "Filter=up", "--reset"}), 0), "6");
    EXPECT_EQ(user_.read("vorn/savers/png.txt"), "Filter=up,");
    expectDone(vorn({"settings", "png", "--reset"}));
    EXPECT_FALSE(std::filesystem::exists(user_.path("vorn/savers/png.txt")));
}

TEST_F(Settings, OfOneApplicationLeaveTheOthersAlone) {
    store("savers/pnm.txt", "Form=plain");
    EXPECT_EQ(value(shown({"pnm", "--app", "Paint", "Form=raw"}), 0), "raw");
    EXPECT_EQ(shown({"pnm", "--app", "PAINT"})["application"], "PAINT");
    EXPECT_EQ(value(shown({"pnm"}), 0), "plain");
    EXPECT_EQ(value(shown({"pnm", "--app", "Paint", "--reset"}), 0), "plain");
    EXPECT_EQ(user_.read("vorn/savers/pnm.txt"), "Form=plain");
}

TEST_F(Settings, AreCheckedBeforeAnyIsStored) {
    for (const auto& [wrong, part] :
         {std::pair("CompressionLevel=10", "0 to 9"), std::pair("Filter=sharp", "auto, none"),
          std::pair("Level=1", "CompressionLevel, Filter"), std::pair("Filter", "NAME=VALUE")}) {
        const Ended ended = vorn({"settings", "png", "Interlace=on", wrong});
        EXPECT_EQ(ended.status, 2);
        EXPECT_NE(ended.err.find(part), std::string::npos) << ended.err;
    }
    EXPECT_EQ(vorn({"settings", "nosuch"}).status, 2);
    EXPECT_TRUE(std::filesystem::is_empty(user_.path()));
    user_.write("vorn", "a file where a directory should be");
    expectFailure(vorn({"settings", "png", "Interlace=on"}), "png", "2010, 0");
}

TEST_F(Settings, OfAviSaversArePutIntoWords) {
    store("savers/avi.txt", "VORN_AVI_1=x73646976:x1:7:6500:0:x8:4:2:0:25:62767<0A1B2C3D>");
    const Ended ended = vorn({"settings", "Avi32"});
    expectDone(ended);
    for (const char* part : {"Frame rate        25\n", "vids\n", "Compressor        0x1\n",
                             "4 bytes\n", "2 bytes, missing\n"}) {
        EXPECT_NE(ended.out.find(part), std::string::npos) << ended.out;
    }
    EXPECT_EQ(shown({"avi"})["avi"]["frameRate"], 25);
    store("savers/avi.txt", "VORN_AVI_1=x73646976");
    EXPECT_EQ(shown({"avi"})["avi"]["valid"], false);
    EXPECT_NE(vorn({"settings", "avi"}).out.find("Not valid"), std::string::npos);
}

TEST_F(Settings, DialogSaysWhyItIsNotShown) {
    const ScopedVariable display("DISPLAY", std::nullopt);
    // The X libraries keep what they allocate when the dialog's library is unloaded.
    const ScopedVariable leaks("ASAN_OPTIONS", "detect_leaks=0");
    const Ended ended = vorn({"settings", "png", "--dialog"});
    EXPECT_EQ(ended.status, 1);
    EXPECT_TRUE(ended.err.ends_with(VORN_DIALOG ? "(2008, 0)\n" : "(73, 0)\n")) << ended.err;
}

}  // namespace
