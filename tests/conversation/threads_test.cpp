// Conversations on several threads.
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
                for (int i = 0; i < 10; ++i) {
                    const int seed = 1000 * number + 10 * round + i;
                    EXPECT_TRUE(loader.reads("w=13,h=29,block=4,seed=" + std::to_string(seed)));
                    loader.closeImage();
                }
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

}  // namespace
