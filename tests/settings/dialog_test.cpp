// The settings dialog of the PNG saver, shown and used.
#include <gtest/gtest.h>
#include <unistd.h>
#include <vorn/host.h>

#include <functional>
#include <optional>
#include <thread>

#include "tests/scratch_home.h"
#include "tests/support/program.h"

// What the X and font libraries allocate once stays when the dialog's library is unloaded.
extern "C" VORN_API const char* __asan_default_options() { return "detect_leaks=0"; }

namespace {

// A display without a screen, for one test, and a user at its keyboard.
class TestDisplay {
  public:
    // Waits until the display can be connected to, and names it in the environment. The server
    // chooses a number that is free and writes it when it is ready.
    TestDisplay() {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        server_.emplace(
            Arguments{XVFB, "-displayfd", std::to_string(ends[1]), "-nolisten", "tcp", "-noreset"});
        ::close(ends[1]);
        std::string number;
        char digit = 0;
        while (::read(ends[0], &digit, 1) == 1 && digit != '\n') number += digit;
        ::close(ends[0]);
        EXPECT_NE(number, "") << "no display";
        ::setenv("DISPLAY", (':' + number).c_str(), 1);
    }

    // Waits for a window with this title and gives it the keyboard.
    static void focus(const std::string& title) {
        tellUser({"search", "--sync", "--onlyvisible", "--name", title, "windowfocus", "--sync"});
    }

    // Presses keys, as xdotool names them, one after the other.
    static void press(const Arguments& keys) { tellUser(joined({"key"}, keys)); }

    void end() { server_.reset(); }

  private:
    static void tellUser(const Arguments& command) {
        const Ended ended = run(joined({XDOTOOL}, command));
        EXPECT_EQ(ended.status, 0) << command[0] << ": " << ended.err;
    }

    std::optional<Program> server_;
};

class Dialog : public testing::Test {
  protected:
    void SetUp() override { display_.emplace(); }

    // Shows the dialog in a host program, whose user meanwhile does something. The answer is its
    // error: 0 when it was completed.
    int32_t show(const std::function<void()>& user, const char* application = "") {
        int32_t code = 0;
        std::thread host([&] {
            VORN_H_RegisterAppName(application);
            const bool completed = VORN_H_ImageVaModuleActivateGUI("png", VORN_SAVER, MTAG_Quiet,
                                                                   VORN_Word{1}, TAG_End);
            code = VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr));
            EXPECT_EQ(completed, code == 0);
        });
        user();
        host.join();
        return code;
    }

    static std::function<void()> pressing(const Arguments& keys) {
        return [keys] {
            TestDisplay::focus("Settings of the png saver");
            TestDisplay::press(keys);
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
    const struct {
        const char* before;  // "": as it was left
        Arguments keys;
        const char* after;
    } cases[] = {{"Other=1,CompressionLevel=3",
                  {"Up", "Up", "Tab",                         // a number
                   "space", "Down", "Down", "Return", "Tab",  // a choice
                   "Tab", "space", "Return"},                 // a switch
                  "Other=1,CompressionLevel=5,Filter=sub,Interlace=true,"},
                 // What is stored is what the dialog begins with; a number that is typed too large
                 // becomes the largest.
                 {"",
                  {"ctrl+a", "4", "2", "Tab", "Tab", "Tab", "space", "Return"},
                  "Other=1,CompressionLevel=9,Filter=sub,Interlace=false,"},
                 {"", {"Return"}, "Other=1,CompressionLevel=9,Filter=sub,Interlace=false,"},
                 // A value that is not valid is replaced by the default that is shown.
                 {"Filter=sharp", {"Return"}, "Filter=auto,"}};
    for (const auto& [before, keys, after] : cases) {
        if (*before) store(before);
        EXPECT_EQ(show(pressing(keys)), 0);
        EXPECT_EQ(stored(), after);
    }
}

TEST_F(Dialog, LeavesTheSettingsWhenItIsCancelled) {
    store("CompressionLevel=3");
    for (const char* key : {"Escape", "Return"}) {  // of the window, and on the button
        EXPECT_EQ(show(pressing({"Down", "Tab", "Tab", "Tab", "Tab", key})), 2007);
        EXPECT_EQ(stored(), "CompressionLevel=3");
    }
}

TEST_F(Dialog, SetsForTheApplicationThatShowsIt) {
    store("CompressionLevel=3");
    EXPECT_EQ(show(pressing({"Up", "Return"}), "Paint"), 0);
    EXPECT_EQ(config_.read("vorn/paint/savers/png.txt"), "CompressionLevel=4,");
    EXPECT_EQ(stored(), "CompressionLevel=3");
}

TEST_F(Dialog, SaysWhenNothingCanBeStored) {
    config_.write("vorn", "a file where the directory should be");
    EXPECT_EQ(show(pressing({"Up", "Return"})), 2010);
}

TEST_F(Dialog, TurnsALostOrMissingDisplayIntoAnError) {
    EXPECT_EQ(show([this] {
                  TestDisplay::focus("Settings of");
                  display_->end();
              }),
              2009);
    for (const auto& name : {std::optional<std::string>(), std::optional<std::string>("nonsense"),
                             std::optional<std::string>(std::getenv("DISPLAY"))}) {
        displayVariable_.set(name);
        EXPECT_EQ(show([] {}), 2008);
    }
    display_.emplace();
    EXPECT_EQ(show(pressing({"Return"})), 0);
}

TEST_F(Dialog, MissesFontsWithoutHarmToItsHost) {
    const ScopedVariable fonts(
        "FONTCONFIG_FILE",
        config_.write("fonts.conf",
                      "<?xml version='1.0'?><!DOCTYPE fontconfig SYSTEM 'fonts.dtd'>"
                      "<fontconfig><dir>/nowhere</dir></fontconfig>"));
    EXPECT_EQ(show([] {}), 2011);
}

TEST_F(Dialog, LeavesNothingOfItselfInTheHost) {
    EXPECT_EQ(show(pressing({"Return"})), 0);
    const std::string all = contentOf("/proc/self/maps");
    EXPECT_NE(all.find("libvorn"), std::string::npos);
    for (const char* library : {"Savers/png.so", "libfltk"})
        EXPECT_EQ(all.find(library), std::string::npos) << library;
}

}  // namespace
