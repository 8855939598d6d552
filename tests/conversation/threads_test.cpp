// Conversations on several threads, and the emergency stop.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
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

// A pipe through which a hanging module tells that it hangs.
class HangingModule {
  public:
    HangingModule() {
        EXPECT_EQ(::mkfifo(path_.c_str(), 0600), 0);
        pipe_ = ::open(path_.c_str(), O_RDWR | O_CLOEXEC);  // a writer too: there is no end to meet
    }
    ~HangingModule() {
        ::close(pipe_);
        std::filesystem::remove(path_);
    }
    HangingModule(const HangingModule&) = delete;
    HangingModule& operator=(const HangingModule&) = delete;

    // Runs a call that meets the hanging module, and stops it from another thread. A call that was
    // not blocked when the stop came may see that there is no module any more.
    bool stopped(const Module& module, const std::function<bool()>& call) {
        bool hung = false;
        std::thread stopper([&] {
            for (char news = 0; ::read(pipe_, &news, 1) == 1 && news != kCallEnded;) {
                hung = true;
                VORN_L_ShutDownHandle(module);
            }
        });
        const bool result = call();
        EXPECT_EQ(::write(pipe_, &kCallEnded, 1), 1);
        stopper.join();
        return hung && !result && (module.code() == 3 || module.code() == 4);
    }

  private:
    static constexpr char kCallEnded = 'e';

    std::string path_ = moduleHome().path("pipe");
    int pipe_ = -1;
    ScopedVariable variable_{"VORN_TEST_PIPE", path_};
};

TEST_F(Threads, StopALoaderThatHangs) {
    HangingModule hanging;
    for (const std::string place : {"main", "open", "begin"}) {
        SCOPED_TRACE(place);
        Loader loader("hang-at-" + place);
        EXPECT_TRUE(hanging.stopped(loader, [&] { return loader.open("x"); }));
        loader.closeImage();
        EXPECT_TRUE(hanging.stopped(loader, [&] { return loader.open("x"); }));
    }
    for (const std::string place : {"read", "block"}) {
        SCOPED_TRACE(place);
        Loader loader("hang-at-" + place);
        const Picture target = plainPicture({4, 6, 1, 1});
        ASSERT_TRUE(loader.open("x"));
        const int first = loader.watch();
        EXPECT_TRUE(hanging.stopped(loader, [&] { return loader.read(target); }));
        loader.closeImage();
        ASSERT_TRUE(loader.open("x"));  // with another program: the stopped one is ended
        awaitEnd(first);
        const int second = loader.watch();
        EXPECT_TRUE(hanging.stopped(loader, [&] { return loader.read(target); }));
        loader.close();
        awaitEnd(second);
    }
}

TEST_F(Threads, StopASaverThatHangs) {
    HangingModule hanging;
    const Picture picture = plainPicture({16, 65536, 1, 1});
    for (const std::string place : {"open", "begin", "write", "block"}) {
        SCOPED_TRACE(place);
        Saver saver("hang-at-" + place);
        ASSERT_TRUE(saver.open(moduleHome().path("saved")));
        saver.describe(picture, VORN_CS_GRAY);
        EXPECT_TRUE(hanging.stopped(saver, [&] { return saver.write(picture); }));
    }
    Saver saver("hang-at-query");
    EXPECT_TRUE(hanging.stopped(saver, [&] { return saver.open("x"); }));
    EXPECT_FALSE(std::filesystem::exists(moduleHome().path("saved")));
}

// Wherever the stop falls in a transfer: the call ends, and the handle serves again.
TEST_F(Threads, StopALoaderThatWorks) {
    Loader loader;
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(loader.open("w=100,h=3000,block=3"));
        std::thread stopper;
        std::thread* started = &stopper;
        const VORN_MeterCallback meter = [](VORN_Image* image, VORN_Word data, int32_t) {
            auto& thread = **reinterpret_cast<std::thread**>(data);
            if (!thread.joinable()) thread = std::thread([image] { VORN_L_ShutDownHandle(image); });
        };
        const bool read =
            loader.read(plainPicture({100, 3000, 3, 1}),
                        words(ITAG_MeterCallback, meter, ITAG_MeterCallbackUserData, &started));
        EXPECT_TRUE(read || loader.code() == 3) << loader.code();
        stopper.join();
        loader.closeImage();
        ASSERT_TRUE(loader.reads("w=9,h=9,seed=" + std::to_string(round))) << loader.code();
        loader.closeImage();
    }
}

}  // namespace
