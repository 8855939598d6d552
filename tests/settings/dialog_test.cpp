// The settings dialog of the PNG saver, shown and used.
#include <gtest/gtest.h>
#include <vorn/host.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <thread>

#include "tests/scratch_home.h"
#include "tests/settings/display.h"

// What the X and font libraries allocate once stays when the dialog's library is unloaded.
extern "C" VORN_API const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

struct Shown {
    bool completed = false;
    int32_t code = 0;
};

class Dialog : public testing::Test {
  protected:
    void SetUp() override { display_.emplace(); }

    // Shows the dialog in a host program, whose user meanwhile does something.
    Shown show(const std::function<void()>& user, const char* application = "") {
        Shown shown;
        std::thread host([&] {
            VORN_H_RegisterAppName(application);
            shown.completed = VORN_H_ImageVaModuleActivateGUI("png", VORN_SAVER, MTAG_Quiet,
                                                              VORN_Word{1}, TAG_End);
            shown.code = VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr));
        });
        user();
        host.join();
        return shown;
    }

    std::function<void()> pressing(std::vector<std::string> keys) {
        return [this, keys = std::move(keys)] {
            display_->focus("Settings of the png saver");
            display_->press(keys);
        };
    }

    std::string stored() const { return config_.read("vorn/savers/png.txt"); }
    void store(const std::string& text) const { config_.write("vorn/savers/png.txt", text); }

    ScratchDirectory config_;
    ScopedVariable configVariable_{"XDG_CONFIG_HOME", config_.path()};
    ScopedVariable home_{"VORN", VORN_BUILT_HOME};
    ScopedVariable displayVariable_{"DISPLAY", std::nullopt};
    std::optional<TestDisplay> display_;
};

TEST_F(Dialog, StoresWhatTheUserChangesAndAccepts) {
    store("Other=1,CompressionLevel=3");
    const Shown shown = show(pressing({"Up", "Up", "Tab",                         // a number
                                       "space", "Down", "Down", "Return", "Tab",  // a choice
                                       "Tab", "space", "Return"}));               // a switch
    EXPECT_TRUE(shown.completed);
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(stored(), "Other=1,CompressionLevel=5,Filter=sub,Interlace=true,");

    // What is stored is what the dialog begins with; a number that is typed too large becomes the
    // largest.
    EXPECT_TRUE(
        show(pressing({"ctrl+a", "4", "2", "Tab", "Tab", "Tab", "space", "Return"})).completed);
    EXPECT_EQ(stored(), "Other=1,CompressionLevel=9,Filter=sub,Interlace=false,");
    EXPECT_TRUE(show(pressing({"Return"})).completed);
    EXPECT_EQ(stored(), "Other=1,CompressionLevel=9,Filter=sub,Interlace=false,");
}

TEST_F(Dialog, LeavesTheSettingsWhenItIsCancelled) {
    store("CompressionLevel=3");
    for (const char* key : {"Escape", "Return"}) {  // of the window, and on the button
        const Shown shown = show(pressing({"Down", "Tab", "Tab", "Tab", "Tab", key}));
        EXPECT_FALSE(shown.completed);
        EXPECT_EQ(shown.code, 2007);
        EXPECT_EQ(stored(), "CompressionLevel=3");
    }
}

TEST_F(Dialog, ReplacesAValueThatIsNotValidByTheDefaultItShows) {
    store("Filter=sharp");
    EXPECT_TRUE(show(pressing({"Return"})).completed);
    EXPECT_EQ(stored(), "Filter=auto,");
}

TEST_F(Dialog, SetsForTheApplicationThatShowsIt) {
    store("CompressionLevel=3");
    EXPECT_TRUE(show(pressing({"Up", "Return"}), "Paint").completed);
    EXPECT_EQ(config_.read("vorn/paint/savers/png.txt"), "CompressionLevel=4,");
    EXPECT_EQ(stored(), "CompressionLevel=3");
}

TEST_F(Dialog, SaysWhenNothingCanBeStored) {
    config_.write("vorn", "a file where the directory should be");
    const Shown shown = show(pressing({"Up", "Return"}));
    EXPECT_FALSE(shown.completed);
    EXPECT_EQ(shown.code, 2010);
}

TEST_F(Dialog, TurnsALostOrMissingDisplayIntoAnError) {
    const Shown lost = show([this] {
        display_->focus("Settings of");
        display_->end();
    });
    EXPECT_FALSE(lost.completed);
    EXPECT_EQ(lost.code, 2009);
    for (const auto& name : {std::optional<std::string>(), std::optional<std::string>("nonsense"),
                             std::optional<std::string>(std::getenv("DISPLAY"))}) {
        displayVariable_.set(name);
        const Shown missing = show([] {});
        EXPECT_FALSE(missing.completed);
        EXPECT_EQ(missing.code, 2008);
    }
    display_.emplace();
    EXPECT_TRUE(show(pressing({"Return"})).completed);
}

TEST_F(Dialog, MissesFontsWithoutHarmToItsHost) {
    const ScopedVariable fonts(
        "FONTCONFIG_FILE",
        config_.write("fonts.conf",
                      "<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'>"
                      "<fontconfig><dir>/nowhere</dir></fontconfig>"));
    EXPECT_EQ(show([] {}).code, 2011);
}

TEST_F(Dialog, LeavesNothingOfItselfInTheHost) {
    EXPECT_TRUE(show(pressing({"Return"})).completed);
    std::ifstream maps("/proc/self/maps");
    const std::string all{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_NE(all.find("libvorn"), std::string::npos);
    for (const char* library : {"Savers/png.so", "libfltk"}) {
        EXPECT_EQ(all.find(library), std::string::npos) << library;
    }
}

}  // namespace
