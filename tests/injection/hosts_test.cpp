// Hosts that die, and hosts that make it hard for the library.
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <memory>

#include "tests/conversation/saved.h"
#include "tests/injection/refusals.h"
#include "tests/injection/talk.h"
#include "tests/injection/wire.h"
#include "tests/support/program.h"

namespace {

class Hosts : public ConversationTest {
  protected:
    Hosts() { installInjected(); }
    const std::string directory_ = moduleHome().makeDirectory("target");
};

// The module's program ends with its host, and the file is what it was or what it shall be.
TEST_F(Hosts, ThatAreKilledAtAnyStepLeaveNothing) {
    for (const Kind kind : {Kind::Loading, Kind::Saving}) {
        double longest = 0;
        int step = 1;
        for (;; ++step) {
            SCOPED_TRACE(std::string(nameOf(kind)) + " " + std::to_string(step));
            const ScopedVariable order("VORN_TEST_HOST_STEP", "kill " + std::to_string(step));
            const Ended ended = run({HOST_PROGRAM, nameOf(kind), directory_});
            const long long end = steadyNanoseconds();
            awaitProgramsIn(moduleHome().path());
            longest = std::max(longest, 1e-6 * static_cast<double>(steadyNanoseconds() - end));
            if (kind == Kind::Saving) {
                ASSERT_EQ(std::distance(std::filesystem::directory_iterator(directory_), {}), 1);
                const bool isOld = moduleHome().read("target/saved") == "old";
                ASSERT_TRUE(isOld || Talk::isWhole(directory_));
            }
            if (ended.status == 0) break;
            ASSERT_EQ(ended.status, 128 + SIGKILL) << ended.err;
        }
        EXPECT_GT(step, 20);
        std::printf("hosts killed while %s: %d steps, the module gone after %.2f ms at most\n",
                    nameOf(kind), step - 1, longest);
    }
}

// From the first step, where the module is only starting, to where it has much of a picture.
TEST_F(Hosts, ThatAreKilledLeaveNoModuleThatHangs) {
    const Wire wire;
    std::vector<std::unique_ptr<Program>> hosts;
    for (const int step : {1, 2, 9, 20}) {
        for (const Kind kind : {Kind::Loading, Kind::Saving}) {
            const ScopedVariable order("VORN_TEST_STEP", "hang " + std::to_string(step));
            const std::vector<std::string> command{HOST_PROGRAM, nameOf(kind), directory_};
            hosts.push_back(std::make_unique<Program>(command));
            ASSERT_TRUE(wire.await());
        }
    }
    hosts.clear();  // with SIGKILL
    awaitProgramsIn(moduleHome().path());
}

TEST_F(Hosts, MayIgnoreOrReapAllChildren) {
    std::signal(SIGCHLD, SIG_IGN);
    EXPECT_TRUE(Talk(Kind::Loading, directory_).whole());
    std::signal(SIGCHLD, SIG_DFL);
    std::atomic<bool> done = false;
    std::thread reaper([&] {
        while (!done) ::waitpid(-1, nullptr, __WALL | WNOHANG);
    });
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(Talk(Kind::Saving, directory_).whole());
    done = true;
    reaper.join();
}

// The error of the first step that fails. 0: the conversation was whole.
int32_t errorOf(Kind kind, const std::string& directory, int32_t& subcode) {
    Talk talk(kind, directory);
    if (talk.module().image() && talk.whole()) return 0;
    subcode = talk.module().subcode();
    return talk.module().code();
}

TEST_F(Hosts, MayHaveFewDescriptors) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    bool refused = false;
    int32_t code = -1;
    for (rlim_t most = 3; code != 0 && most < 100; ++most) {
        const rlimit few{most, before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        int32_t subcode = 0;
        code = errorOf(Kind::Loading, directory_, subcode);
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
        // 17: the connection could not be made. 19: the program could not be started.
        EXPECT_TRUE(code == 0 || code == 17 || code == 0x08000013) << code;
        EXPECT_TRUE(code == 0 || subcode == EMFILE) << subcode;
        refused = refused || code != 0;
    }
    EXPECT_EQ(code, 0);
    EXPECT_TRUE(refused);
}

TEST_F(Hosts, MayHaveNoMemoryForAConnection) {
    for (const char* call : {"memfd_create", "ftruncate", "mmap"}) {
        for (const Kind kind : {Kind::Loading, Kind::Saving}) {
            int32_t subcode = 0;
            refuse(call, ENOSPC);
            EXPECT_EQ(errorOf(kind, directory_, subcode) & 0xFFFF, 17) << call;
            EXPECT_EQ(subcode, ENOSPC) << call;
            refuse("", 0);
            EXPECT_EQ(errorOf(kind, directory_, subcode), 0) << call;
        }
    }
}

}  // namespace
