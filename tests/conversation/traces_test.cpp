// What is left behind, and by whom: nothing.
#include <memory>

#include "tests/conversation/host.h"
#include "tests/conversation/saved.h"
#include "tests/support/program.h"

namespace {

class Traces : public ConversationTest {
  protected:
    // A host program in this one's home directory.
    static std::vector<std::string> host(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {HOST_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return command;
    }
};

TEST_F(Traces, OfTwoHundredConversationsAreNone) {
    moduleHome().makeDirectory("target");
    const std::string target = moduleHome().path("target/saved");
    const Picture picture = plainPicture({9, 9, 3, 1});
    const auto before = openDescriptors();
    for (int i = 0; i < 200; ++i) {
        if (i % 3 == 0) {
            Saver saver;
            ASSERT_TRUE(saver.open(target));
            saver.describe(picture, VORN_CS_RGB);
            ASSERT_TRUE(saver.write(picture));
        } else if (i % 3 == 1) {
            Loader loader;
            ASSERT_TRUE(loader.reads("w=9,h=9"));
            ASSERT_TRUE(i % 2 == 0 || loader.closeImage());
        } else {
            Loader loader("version-2");
            ASSERT_FALSE(loader.open("x"));
            ASSERT_FALSE(loader.open("x"));
        }
        ASSERT_EQ(openDescriptors(), before);
        ASSERT_FALSE(hasChildren());
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(moduleHome().path("target")), {}),
              1);
}

// Each read goes on inside the meter callback of the one before, so all are under way at once.
struct Chain {
    std::vector<std::unique_ptr<Loader>>& loaders;
    std::vector<Picture>& targets;
    size_t next = 0;
    bool good = true;
};

void readNext(VORN_Image*, VORN_Word data, int32_t) {
    auto& chain = *reinterpret_cast<Chain*>(data);
    if (chain.next == chain.loaders.size()) return;
    const size_t mine = chain.next++;
    const bool read = chain.loaders[mine]->read(
        chain.targets[mine],
        words(ITAG_MeterCallback, &readNext, ITAG_MeterCallbackUserData, data));
    chain.good = read && chain.good;
}

TEST_F(Traces, OfManyHandlesAtOnceAreKeptApart) {
    std::vector<std::unique_ptr<Loader>> loaders;
    std::vector<Picture> targets;
    for (int i = 0; i < 8; ++i) {
        loaders.push_back(std::make_unique<Loader>());
        targets.push_back(plainPicture({10, 50, 3, 1}));
        ASSERT_TRUE(loaders.back()->open("w=10,h=50,block=3,seed=" + std::to_string(i)));
    }
    Chain chain{loaders, targets};
    readNext(nullptr, reinterpret_cast<VORN_Word>(&chain), 0);
    EXPECT_TRUE(chain.good);
    for (size_t i = 0; i < targets.size(); ++i)
        EXPECT_TRUE(
            same(targets[i], loadersPicture("w=10,h=50,block=3,seed=" + std::to_string(i))));
}

TEST_F(Traces, OfSeveralHostsAtOnceAreKeptApart) {
    installLoader("loader");
    std::vector<std::unique_ptr<Program>> hosts;
    for (int i = 0; i < 4; ++i)
        hosts.push_back(std::make_unique<Program>(host({"40", std::to_string(1000 * i)})));
    for (const auto& program : hosts) {
        const Ended ended = program->wait();
        EXPECT_EQ(ended.status, 0) << ended.err;
    }
}

}  // namespace
