#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vorn/host.h>

#include <csignal>
#include <set>
#include <thread>

#include "tests/scratch_home.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_limit.h"

namespace {

namespace fs = std::filesystem;

class Parameters : public testing::Test {
  protected:
    void TearDown() override { VORN_H_RegisterAppName(""); }

    static bool store(const std::string& module, const std::string& text, int32_t type = 2) {
        return VORN_H_ModuleStoreParameters(module.c_str(), type, text.c_str()) != 0;
    }

    static std::string fetch(const std::string& module, int32_t type = 2) {
        char* text = VORN_H_ModuleGetParameters(module.c_str(), type);
        const std::string copy = text != nullptr ? text : "(none)";
        VORN_H_ModuleFreeParameters(text);
        return copy;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(user_.path())) {
            if (!entry.is_directory()) names.insert(fs::relative(entry, user_.path()));
        }
        return names;
    }

    ScratchDirectory user_;
    ScopedVariable config_{"XDG_CONFIG_HOME", user_.path("config")};
    ScopedVariable home_{"HOME", user_.path("home")};
};

TEST_F(Parameters, LinesAreStoredWithCommas) {
    EXPECT_TRUE(store("Sample", "a=1\nb=2\n"));
    EXPECT_EQ(user_.read("config/vorn/savers/sample.txt"), "a=1,b=2,");
    EXPECT_EQ(fetch("Sample"), "a=1\nb=2\n");
    EXPECT_TRUE(store("Sample", "x=1,2"));
    EXPECT_EQ(fetch("Sample"), "x=1\n2");
    for (const std::string& text : {std::string(), std::string(100000, 'v')}) {
        EXPECT_TRUE(store("Sample", text));
        EXPECT_EQ(fetch("Sample"), text);
    }
    VORN_H_ModuleFreeParameters(nullptr);
}

TEST_F(Parameters, ApplicationsHaveTheirOwnCopyBesideTheCommonOne) {
    EXPECT_EQ(fetch("Sample"), "(none)");
    EXPECT_STREQ(VORN_H_RegisterAppName("Paint"), "Paint");
    EXPECT_EQ(fetch("Sample"), "(none)");
    EXPECT_TRUE(store("Sample", "FrameRate=25"));
    EXPECT_EQ(user_.read("config/vorn/paint/savers/sample.txt"), "FrameRate=25");
    EXPECT_EQ(user_.read("config/vorn/savers/sample.txt"), "FrameRate=25");

    VORN_H_RegisterAppName("Draw");
    EXPECT_EQ(fetch("Sample"), "FrameRate=25");
    std::thread([] { EXPECT_TRUE(store("Sample", "FrameRate=50")); }).join();
    EXPECT_EQ(fetch("Sample"), "FrameRate=50");
    VORN_H_RegisterAppName("PAINT");
    EXPECT_EQ(fetch("sAMPLE"), "FrameRate=25");
    EXPECT_STREQ(VORN_H_RegisterAppName(nullptr), "");
    EXPECT_EQ(fetch("SAMPLE"), "FrameRate=50");
    EXPECT_EQ(files(), (std::set<std::string>{"config/vorn/paint/savers/sample.txt",
                                              "config/vorn/savers/sample.txt"}));
}

TEST_F(Parameters, OneCopyCanBeStoredAndRemovedAlone) {
    const auto storeOwn = [](const char* text) {
        return VORN_H_ModuleStoreOwnParameters("Sample", 2, text) != 0;
    };
    EXPECT_TRUE(storeOwn(nullptr));
    EXPECT_TRUE(store("Sample", "common"));
    VORN_H_RegisterAppName("Paint");
    EXPECT_TRUE(storeOwn("a=1\nb=2"));
    EXPECT_EQ(fetch("Sample"), "a=1\nb=2");
    EXPECT_EQ(user_.read("config/vorn/savers/sample.txt"), "common");
    EXPECT_TRUE(storeOwn(nullptr));
    EXPECT_EQ(fetch("Sample"), "common");
    EXPECT_EQ(files(), std::set<std::string>{"config/vorn/savers/sample.txt"});
    VORN_H_RegisterAppName("");
    EXPECT_TRUE(storeOwn(nullptr));
    EXPECT_EQ(files(), std::set<std::string>{});
    EXPECT_FALSE(VORN_H_ModuleStoreOwnParameters(nullptr, 2, nullptr));
    user_.makeDirectory("config/vorn/savers/sample.txt");
    EXPECT_FALSE(storeOwn(nullptr));
}

TEST_F(Parameters, LongApplicationNamesAreCut) {
    const std::string kept(79, 'n');
    const char* name = VORN_H_RegisterAppName((kept + "rest").c_str());
    EXPECT_EQ(name, kept);
    EXPECT_EQ(VORN_H_RegisterAppName(name), kept);
    EXPECT_TRUE(store("Sample", "a=1"));
    EXPECT_EQ(user_.read("config/vorn/" + kept + "/savers/sample.txt"), "a=1");
}

TEST_F(Parameters, LieInTheHomeDirectoryUnlessTheVariableNamesAnAbsolutePath) {
    for (const auto& value : {std::optional<std::string>(), std::optional<std::string>(""),
                              std::optional<std::string>("relative")}) {
        config_.set(value);
        EXPECT_TRUE(store("Sample", "a=1"));
        EXPECT_EQ(files(), std::set<std::string>{"home/.config/vorn/savers/sample.txt"});
        user_.remove("home");
    }
    home_.set(std::nullopt);
    EXPECT_FALSE(store("Sample", "a=1"));
    EXPECT_EQ(fetch("Sample"), "(none)");
    EXPECT_EQ(files(), std::set<std::string>{});
}

TEST_F(Parameters, NoNameLeavesTheStoreOrMeetsAnother) {
    user_.write("config/evil.txt", "untouched");
    const char* const modules[] = {
        "",      ".",    "..",   "../evil", "../../../evil", "/etc/passwd",
        "a/b",   "a//b", "a\\b", "a",  //
        "a.txt", "a%2e", "a.",   "%",       "%2e",           "\x01\n\x7f",
        " ",     "a ",   "-",    "~",       "savers",        "\xc3\xa9"};
    const std::string applications[] = {"..", "Savers", "/a/b"};
    for (const std::string& application : applications) {
        VORN_H_RegisterAppName(application.c_str());
        for (const std::string module : modules) {
            EXPECT_TRUE(store(module, application + '|' + module));
        }
    }
    for (const std::string& application : applications) {
        for (const std::string module : modules) {
            VORN_H_RegisterAppName(application.c_str());
            EXPECT_EQ(fetch(module), application + '|' + module);
            VORN_H_RegisterAppName("");
            EXPECT_EQ(fetch(module), "/a/b|" + module);
        }
    }
    EXPECT_EQ(user_.read("config/evil.txt"), "untouched");
    EXPECT_EQ(files().size(), 1 + (std::size(applications) + 1) * std::size(modules));
    for (const std::string& file : files()) {
        EXPECT_TRUE(file == "config/evil.txt" || file.starts_with("config/vorn/")) << file;
    }
}

TEST_F(Parameters, NamesThatNoFileCanHaveAreRefused) {
    for (size_t length : {300u, 5000u}) {
        const std::string name(length, 'x');
        EXPECT_FALSE(store(name, "a=1"));
        EXPECT_EQ(fetch(name), "(none)");
    }
    EXPECT_EQ(VORN_H_ModuleStoreParameters(nullptr, 2, "a=1"), 0);
    EXPECT_EQ(VORN_H_ModuleStoreParameters("Sample", 2, nullptr), 0);
    EXPECT_EQ(VORN_H_ModuleGetParameters(nullptr, 2), nullptr);
    EXPECT_EQ(files(), std::set<std::string>{});
}

TEST_F(Parameters, OneOfTwoCopiesIsEnough) {
    user_.write("config/vorn/paint", "a file where a directory should be");
    VORN_H_RegisterAppName("Paint");
    EXPECT_TRUE(store("Sample", "a=1"));
    EXPECT_EQ(fetch("Sample"), "a=1");
    EXPECT_TRUE(store("Sample", "every type but savers is a loader", 3));
    EXPECT_EQ(user_.read("config/vorn/loaders/sample.txt"), fetch("Sample", 1));
    user_.remove("config/vorn/loaders");
    user_.write("config/vorn/loaders", "another");
    EXPECT_FALSE(store("Sample", "a=1", 1));
}

TEST_F(Parameters, FullDiskKeepsTheOldText) {
    ASSERT_TRUE(store("Sample", "old"));
    {
        const FileLimit limit(1000);
        EXPECT_FALSE(store("Sample", std::string(5000, 'n')));
    }
    EXPECT_EQ(fetch("Sample"), "old");
    EXPECT_EQ(files(), std::set<std::string>{"config/vorn/savers/sample.txt"});
}

TEST_F(Parameters, ShortMemoryNeitherLosesNorMixesTexts) {
    ASSERT_TRUE(store("Sample", "common"));
    VORN_H_RegisterAppName("Paint");
    ASSERT_TRUE(store("Sample", "own"));
    failAtEachAllocation([](auto run) {
        const auto [stored, failed] = run([] { return store("Sample", "own"); });
        EXPECT_EQ(stored, !failed);
    });
    failAtEachAllocation([](auto run) {
        const auto [text, failed] = run([] { return fetch("Sample"); });
        EXPECT_EQ(text, failed ? "(none)" : "own");
    });
}

// Writers that never stop are ended in the middle of what they do.
TEST_F(Parameters, ReadersSeeWholeTextsWhoeverWritesAndDies) {
    const std::string texts[] = {std::string(20000, 'a'), std::string(15000, 'b')};
    ASSERT_TRUE(store("Sample", texts[0]));
    for (int round = 0; round < 10; ++round) {
        pid_t writers[2];
        for (int i = 0; i < 2; ++i) {
            writers[i] = fork();
            if (writers[i] != 0) continue;
            while (store("Sample", texts[i])) {
            }
            _exit(1);
        }
        for (const std::string& awaited : texts) {
            std::string seen;
            while (seen != awaited) {
                seen = fetch("Sample");
                ASSERT_TRUE(seen == texts[0] || seen == texts[1]) << seen.size();
            }
        }
        for (const pid_t writer : writers) {
            kill(writer, SIGKILL);
            int status = 0;
            waitpid(writer, &status, 0);
            EXPECT_TRUE(WIFSIGNALED(status));
        }
        const std::string left = fetch("Sample");
        EXPECT_TRUE(left == texts[0] || left == texts[1]) << left.size();
    }
}

}  // namespace
