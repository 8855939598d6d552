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

TEST_F(Dialogs, NewFormGetsTheHostsTagsAndItsErrorIsTheHosts) {
    install("new", "Savers/png.so");
    onNewThread([&] {
        const VORN_Word tags[] = {MTAG_Quiet, 0, MTAG_ParentWindow, window(), TAG_End};
        VORN_L_SetErrorCode(nullptr, 20, 2);
        EXPECT_TRUE(VORN_H_ImageModuleActivateGUI("png", 2, tags));
        EXPECT_EQ(record_.tags, tags);
        EXPECT_EQ(errorCode(), 0);

        record_.answer = VORN_ErrorPair{5} << 32 | 27;
        EXPECT_FALSE(VORN_H_ImageModuleActivateGUI("png", 2, tags));
        EXPECT_EQ(errorCode(), 27);
        EXPECT_EQ(errorSubcode(), 5);
        record_.answer = VORN_ErrorPair{0xFFFFFFFF} << 32 | 0x80000001;
        EXPECT_FALSE(VORN_H_ImageModuleActivateGUI("PNG", 2, tags));
        EXPECT_EQ(errorCode(), INT32_MIN + 1);
        EXPECT_EQ(errorSubcode(), -1);
        EXPECT_EQ(record_.newCalls, 3);
        EXPECT_EQ(record_.unloads, 3);
        EXPECT_TRUE(messages.empty());
    });
}

TEST_F(Dialogs, OlderFormIsUsedWhereThereIsNoOtherAndAlwaysCountsAsCompleted) {
    install("both", "Loaders/tiff.dll");
    install("old", "Savers/png.so");
    onNewThread([&] {
        EXPECT_TRUE(
            VORN_H_ImageVaModuleActivateGUI("tiff", 1, MTAG_ParentWindow, window(), TAG_End));
        EXPECT_EQ(record_.newCalls, 1);
        EXPECT_EQ(record_.oldCalls, 0);
        EXPECT_TRUE(
            VORN_H_ImageVaModuleActivateGUI("png", 2, MTAG_ParentWindow, window(), TAG_End));
        EXPECT_EQ(record_.oldCalls, 1);
        EXPECT_EQ(record_.second, 0u);  // no tags
        EXPECT_EQ(record_.unloads, 2);
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
