// Conversations on several threads, and several on one.
#include <memory>
#include <thread>

#include "tests/conversation/host.h"

namespace {

using Threads = ConversationTest;

TEST_F(Threads, HaveHandlesOfTheirOwn) {
    installLoader("loader");
    installSaver("saver", "RGB");
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            for (int round = 0; round < 5; ++round) {
                Loader loader;
                for (int seed = 1000 * number; seed < 1000 * number + 10; ++seed)
                    EXPECT_TRUE(loader.reads("w=13,h=29,block=4,seed=" + std::to_string(seed)));
                Saver saver;
                const Picture picture = plainPicture({13, 29, 3, 1});
                EXPECT_TRUE(saver.open(moduleHome().path("saved" + std::to_string(number))));
                saver.describe(picture, VORN_CS_RGB);
                EXPECT_TRUE(saver.write(picture));
                Loader failing;
                EXPECT_FALSE(failing.open("fail=open,code=" + std::to_string(3000 + number)));
                EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)), 3000 + number);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(Threads, MayPassAHandleOnAndEnd) {
    Loader loader;
    std::thread([&] { EXPECT_TRUE(loader.open("w=9,h=9,seed=4")); }).join();
    const Picture target = plainPicture({9, 9, 3, 1});
    EXPECT_TRUE(loader.read(target));
    EXPECT_TRUE(same(target, loadersPicture("w=9,h=9,seed=4")));
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

TEST_F(Threads, MayHaveManyTransfersUnderWayAtOnce) {
    std::vector<std::unique_ptr<Loader>> loaders;
    std::vector<Picture> targets, expected;
    for (int i = 0; i < 8; ++i) {
        const std::string name = "w=10,h=50,block=3,seed=" + std::to_string(i);
        loaders.push_back(std::make_unique<Loader>());
        targets.push_back(plainPicture({10, 50, 3, 1}));
        expected.push_back(loadersPicture(name));
        ASSERT_TRUE(loaders.back()->open(name));
    }
    Chain chain{loaders, targets};
    readNext(nullptr, reinterpret_cast<VORN_Word>(&chain), 0);
    EXPECT_TRUE(chain.good);
    for (size_t i = 0; i < targets.size(); ++i) EXPECT_TRUE(same(targets[i], expected[i]));
}

}  // namespace
