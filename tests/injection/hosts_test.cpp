// Hosts that die, and hosts that make it hard for the library.
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <csignal>
#include <memory>

#include "tests/conversation/saved.h"
#include "tests/injection/talk.h"
#include "tests/injection/wire.h"
#include "tests/support/file_limit.h"
#include "tests/support/program.h"

// The linker hands every call of mmap, which the C library knows by its longer name, to the second
// of these (--wrap).
void* realMap(void* address, size_t size, int access, int flags, int file, off_t offset) asm(
    "__real_mmap64");
void* refusableMap(void* address, size_t size, int access, int flags, int file, off_t offset) asm(
    "__wrap_mmap64");

namespace {

bool mapsAreRefused = false;  // those of files

using Hosts = InjectedTest;

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

// The error of the first step that fails, and what the system said. 0: the conversation was whole.
std::pair<int32_t, int32_t> errorOf(Kind kind, const std::string& directory) {
    Talk talk(kind, directory);
    if (talk.get() && talk.whole()) return {0, 0};
    return {talk.error(), talk.subcode()};
}

TEST_F(Hosts, MayHaveFewDescriptors) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    int refusals = 0;
    for (rlim_t most = 3; most < 100; ++most) {
        const rlimit few{most, before.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
        const auto [code, reason] = errorOf(Kind::Loading, directory_);
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
        if (code == 0) break;
        ++refusals;
        // 17: the connection could not be made. 19: the program could not be started.
        EXPECT_TRUE((code == 17 || code == 0x08000013) && reason == EMFILE)
            << code << ' ' << reason;
    }
    EXPECT_GT(refusals, 0);
    EXPECT_LT(refusals, 97);
}

TEST_F(Hosts, MayHaveNoMemoryForAConnection) {
    for (const Kind kind : {Kind::Loading, Kind::Saving}) {
        mapsAreRefused = true;
        EXPECT_EQ(errorOf(kind, directory_), std::pair(17, ENOMEM));
        mapsAreRefused = false;
        {
            const FileLimit noRoom(0);
            EXPECT_EQ(errorOf(kind, directory_), std::pair(17, EFBIG));
        }
        EXPECT_EQ(errorOf(kind, directory_), std::pair(0, 0));
    }
}

}  // namespace

void* refusableMap(void* address, size_t size, int access, int flags, int file, off_t offset) {
    if (!mapsAreRefused || file < 0) return realMap(address, size, access, flags, file, offset);
    errno = ENOMEM;
    return MAP_FAILED;
}
