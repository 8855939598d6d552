#include "tests/catalogue/catalogue_fixture.h"
#include "tests/catalogue/dialog.h"

namespace {

struct Message {
    VORN_Word parentWindow;
    std::string text;
};
std::vector<Message> messages;

class Dialogs : public CatalogueTest {
  protected:
    void SetUp() override {
        messages.clear();
        VORN_H_SetMessageHandler([](VORN_Word parent, const char* text, const char* caption) {
            messages.push_back({parent, std::string(caption) + ": " + text});
        });
    }
    void TearDown() override { VORN_H_SetMessageHandler(nullptr); }

    void install(const std::string& form, const std::string& as) {
        std::filesystem::copy_file(std::string(DIALOGS) + "/" + form + ".so", home_.path(as));
    }

    VORN_Word window() { return reinterpret_cast<VORN_Word>(&record_); }

    void expectNoDialog(const char* module, int32_t type) {
        messages.clear();
        for (const VORN_Word quiet : {0, 1}) {
            VORN_L_SetErrorCode(nullptr, 0, 0);
            EXPECT_FALSE(VORN_H_ImageVaModuleActivateGUI(module, type, MTAG_ParentWindow, window(),
                                                         MTAG_Quiet, quiet, TAG_End));
            EXPECT_EQ(errorCode(), 73);
            ASSERT_EQ(messages.size(), 1u);
            EXPECT_EQ(messages[0].text, "Parameters: No Parameters for this saver.");
            EXPECT_EQ(messages[0].parentWindow, window());
        }
    }

    DialogRecord record_;
};

TEST_F(Dialogs, NewFormGetsTheHostsTagsAndSaysAnErrorTheOlderFormAlwaysCompletes) {
    install("new", "Savers/png.so");
    install("both", "Loaders/tiff.dll");
    install("old", "Savers/old.so");
    const struct {
        const char* module;
        int32_t type, code, subcode, newCalls, oldCalls;
    } cases[] = {{"png", 2, 0, 0, 1, 0},
                 {"PNG", 2, 27, 5, 2, 0},
                 {"png", 2, INT32_MIN + 1, -1, 3, 0},
                 {"tiff", 1, 0, 0, 4, 0},
                 {"old", 2, 0, 0, 4, 1}};
    const VORN_Word tags[] = {MTAG_Quiet, 0, MTAG_ParentWindow, window(), TAG_End};
    onNewThread([&] {
        VORN_L_SetErrorCode(nullptr, 20, 2);
        for (const auto& c : cases) {
            record_.answer = VORN_ErrorPair{static_cast<uint32_t>(c.subcode)} << 32 |
                             static_cast<uint32_t>(c.code);
            record_.tags = nullptr;
            EXPECT_EQ(VORN_H_ImageModuleActivateGUI(c.module, c.type, tags) != 0, c.code == 0);
            EXPECT_EQ(record_.tags, c.oldCalls == 0 ? tags : nullptr);
            EXPECT_EQ(errorCode(), c.code);
            EXPECT_EQ(errorSubcode(), c.subcode);
            EXPECT_EQ(record_.newCalls, c.newCalls);
            EXPECT_EQ(record_.oldCalls, c.oldCalls);
            EXPECT_EQ(record_.unloads, c.newCalls + c.oldCalls);
        }
        EXPECT_EQ(record_.second, 0u);  // the older form gets no tags
        EXPECT_TRUE(messages.empty());
    });
}

TEST_F(Dialogs, ModulesWithoutOneSaySoUnlessQuiet) {
    install("neither", "Savers/png.so");
    install("new", "Loaders/tiff.so");
    home_.write("Savers/text.so", "no library");
    onNewThread([&] {
        expectNoDialog("png", 2);
        expectNoDialog("tiff", 2);
        expectNoDialog("tiff", 3);
        expectNoDialog("text", 2);
        expectNoDialog("", 1);
        expectNoDialog(nullptr, 1);
        expectNoDialog(std::string(5000, 'x').c_str(), 1);
        EXPECT_EQ(record_.newCalls, 0);
    });
}

}  // namespace
