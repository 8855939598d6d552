#include "config/home_directory.h"

#include <gtest/gtest.h>
#include <vorn/host.h>

#include <thread>

#include "platform/path.h"
#include "tests/scratch_home.h"

namespace {

std::string lastMessage;

class HomeDirectory : public testing::Test {
  protected:
    void SetUp() override {
        lastMessage.clear();
        VORN_H_SetMessageHandler([](VORN_Word, const char* text, const char* caption) {
            lastMessage = text;
            EXPECT_EQ(caption, nullptr);
        });
        vorn::platform::replaceDriveRoots(roots_);
    }
    void TearDown() override {
        vorn::platform::replaceDriveRoots(nullptr);
        VORN_H_SetMessageHandler(nullptr);
    }

    // What VORN_Initialize reports, or "" when it fails.
    static std::string initialize(bool quiet = false) {
        const char* directory = nullptr;
        const bool found = VORN_Initialize(&directory, quiet);
        EXPECT_EQ(found, directory != nullptr);
        return found ? directory : "";
    }

    void setDrive(char letter, const std::string& name) {
        rootPaths_[letter - 'C'] = drives_.makeDirectory(name);
        roots_[letter - 'C'] = rootPaths_[letter - 'C'].c_str();
    }

    ScratchDirectory drives_;
    std::string rootPaths_[24];
    const char* roots_[24] = {};
};

TEST_F(HomeDirectory, VariableLosesTrailingBlanksAndOneSeparator) {
    ScratchHome home;
    for (const char* ending : {"", "/", "  ", "/  "}) {
        home.variable.set(home.path() + ending);
        EXPECT_EQ(GetHomeDirectory(), home.path()) << ending;
        EXPECT_EQ(initialize(), home.path()) << ending;
        EXPECT_EQ(std::getenv("VORN"), home.path()) << ending;
    }
    home.variable.set(home.path() + "//");
    EXPECT_EQ(initialize(), home.path() + "/");
    EXPECT_EQ(lastMessage, "");
}

TEST_F(HomeDirectory, MessageNamesTheMissingEntry) {
    ScratchHome home;
    const std::string tail =
        " in VORN directory '" + home.path() + "'.  Consult\nyour user manual for details.";
    for (const char* name : {"Savers", "Loaders", "Errors"}) {
        const bool isFile = name == std::string("Errors");
        home.remove(name);
        isFile ? home.makeDirectory(name) : home.write(name, "a file");
        EXPECT_EQ(initialize(), "");
        EXPECT_EQ(lastMessage,
                  "Can't find '" + std::string(name) + (isFile ? "' file" : "' directory") + tail);
    }
    lastMessage.clear();
    EXPECT_EQ(initialize(true), "");
    EXPECT_EQ(lastMessage, "");
}

TEST_F(HomeDirectory, OneBesideTheProgramComesBeforeTheDrives) {
    const ScopedVariable unset("VORN", std::nullopt);
    const std::string home = drives_.makeHome("apps/VORN");
    const std::string program = drives_.makeDirectory("apps/bin") + "/tell_home";
    std::filesystem::copy_file(TELL_HOME, program);
    const std::string command = program + " >" + drives_.path("answer");

    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(drives_.read("answer"), home);
    drives_.remove("apps/VORN/Loaders");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_NE(drives_.read("answer"), home);
}

TEST_F(HomeDirectory, DrivesAreSearchedInOrderAndAnIncompleteDirectoryEndsTheSearch) {
    ScopedVariable variable("VORN", std::nullopt);
    setDrive('D', "d");
    setDrive('F', "f");
    EXPECT_EQ(initialize(), "");
    EXPECT_EQ(lastMessage.substr(0, 27), "Can't find VORN directory. ");

    drives_.makeHome("f/VORN");
    drives_.makeHome("d/OXLEAF/VORN");
    drives_.makeHome("d/MOSSGATE/VORN");
    EXPECT_EQ(GetHomeDirectory(), drives_.path("d/MOSSGATE/VORN"));  // searches on first need
    EXPECT_EQ(initialize(), drives_.path("d/MOSSGATE/VORN"));
    EXPECT_EQ(std::getenv("VORN"), drives_.path("d/MOSSGATE/VORN"));

    variable.set(std::nullopt);
    drives_.remove("d/MOSSGATE/VORN/Savers");
    EXPECT_EQ(initialize(true), "");
    EXPECT_EQ(std::getenv("VORN"), nullptr);
}

TEST_F(HomeDirectory, EmptyVariableIsCheckedByTheHostAndUnsetForTheGetter) {
    const ScopedVariable empty("VORN", "");
    EXPECT_EQ(initialize(), "");
    EXPECT_NE(lastMessage.find("in VORN directory ''"), std::string::npos);

    setDrive('C', "c");
    drives_.makeHome("c/VORN");
    lastMessage.clear();
    EXPECT_EQ(GetHomeDirectory(), drives_.path("c/torvex"));
    EXPECT_EQ(std::getenv("VORN"), drives_.path("c/torvex"));
    EXPECT_EQ(lastMessage, "");
}

TEST_F(HomeDirectory, ReportedPathOutlivesTheThreadAndLaterCalls) {
    ScratchHome home, other;
    home.variable.set(home.path() + "/");
    const char* directory = nullptr;
    std::thread([&] { VORN_Initialize(&directory, 1); }).join();
    home.variable.set(other.path());
    EXPECT_EQ(GetHomeDirectory(), other.path());
    EXPECT_EQ(directory, home.path());
}

}  // namespace
