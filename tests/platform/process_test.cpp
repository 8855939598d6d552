#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "tests/platform/started.h"
#include "tests/scratch_home.h"

namespace {

using namespace vorn;

int32_t startError(const std::string& path) {
    char name[] = "x";
    char* arguments[] = {name, nullptr};
    platform::ProcessStart start;
    start.path = path.c_str();
    start.arguments = arguments;
    platform::Process process;
    const int32_t error = platform::startProcess(start, process);
    EXPECT_EQ(process.watch, -1) << path;
    return error;
}

ptrdiff_t openDescriptors() {
    const std::filesystem::directory_iterator list("/proc/self/fd");
    return std::distance(begin(list), end(list));
}

bool hasChildren() { return ::waitpid(-1, nullptr, WNOHANG | __WALL) != -1; }

TEST(Process, ThatCannotStartSaysWhyAndLeavesNothing) {
    const ScratchDirectory scratch;
    const std::string text = scratch.write("text", "not a program\n");
    const auto before = openDescriptors();
    EXPECT_EQ(startError(scratch.path("missing")), ENOENT);
    EXPECT_EQ(startError(scratch.path()), EACCES);
    EXPECT_EQ(startError(text), EACCES);
    std::filesystem::permissions(text, std::filesystem::perms::owner_all);
    EXPECT_EQ(startError(text), ENOEXEC);
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasChildren());
}

// The descriptor that a program watches its host with.
int hostIn(const std::vector<std::string>& lines) { return std::stoi(lines[3].substr(10)); }

TEST(Process, InheritsWhatItIsGivenAndNothingElse) {
    const ScopedVariable ofTheHost("OF_THE_HOST", "here");
    const ScopedVariable stale("VORN_HOST", "77");
    const ScopedVariable arenas("MALLOC_ARENA_MAX", "8");
    const int leaky = ::dup(STDERR_FILENO);  // not close-on-exec
    const int32_t given = platform::createSemaphore();
    rlimit cores{};
    ::getrlimit(RLIMIT_CORE, &cores);
    const rlimit most{cores.rlim_max, cores.rlim_max};
    ::setrlimit(RLIMIT_CORE, &most);
    const auto before = openDescriptors();
    const Started program("tell", {given});
    const auto lines = program.hearAll();
    EXPECT_EQ(openDescriptors(), before + 3);  // the socket, the process and the line to it
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_NE(hostIn(lines), 77);
    std::vector<int> expected = {given, program.theirs, hostIn(lines)};
    std::sort(expected.begin(), expected.end());
    std::string list = "descriptors 0(empty) 1(empty) 2";
    for (const int number : expected) list += " " + std::to_string(number);
    EXPECT_EQ(lines[0], list + ", pipes 1");
    EXPECT_EQ(lines[4], "MALLOC_ARENA_MAX=2");
    EXPECT_EQ(lines[5], "OF_THE_HOST=here");
    EXPECT_EQ(lines[6], "core 0");
    ::setrlimit(RLIMIT_CORE, &cores);
    platform::closeDescriptor(given);
    ::close(leaky);
}

TEST(Process, StartsAlsoWhileTheStandardStreamsAreClosed) {
    int kept[3];
    for (int stream = 0; stream < 3; ++stream) {
        kept[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, 3);
        ::close(stream);
    }
    const Started teller("tell");
    for (int stream = 0; stream < 3; ++stream) {
        ::dup2(kept[stream], stream);
        ::close(kept[stream]);
    }
    EXPECT_GT(teller.process.watch, 2);
    const auto lines = teller.hearAll();
    ASSERT_GE(lines.size(), 4u);
    EXPECT_TRUE(lines[0].starts_with("descriptors 0(empty) 1(empty) 2(empty) "));
    EXPECT_GT(hostIn(lines), 2);
}

volatile std::sig_atomic_t handled = 0;

// A host's action for a signal, for as long as a test.
struct SignalAction {
    SignalAction(int signal, void (*action)(int))
        : number(signal), before(std::signal(signal, action)) {}
    ~SignalAction() { std::signal(number, before); }
    int number;
    void (*before)(int);
};

TEST(Process, StartsWithStandardSignalsAndLeavesTheHostsAlone) {
    const auto note = [](int) { handled = handled + 1; };
    const SignalAction child(SIGCHLD, note), user(SIGUSR2, note), ignored(SIGTERM, SIG_IGN);
    sigset_t before, blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const Started program("tell");
    const auto lines = program.hearAll();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[1], "SigBlk:\t0000000000000000");
    EXPECT_EQ(lines[2], "SigIgn:\t0000000000000000");
    program.waitForEnd();
    EXPECT_EQ(handled, 0);  // no SIGCHLD
    ::raise(SIGUSR2);
    EXPECT_EQ(handled, 1);
    ::raise(SIGTERM);
    ::pthread_sigmask(SIG_SETMASK, &before, &blocked);
    EXPECT_TRUE(::sigismember(&blocked, SIGUSR1));
    EXPECT_FALSE(::sigismember(&blocked, SIGUSR2));
}

TEST(Process, IsCollectedByAHostThatIsTheReaper) {
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    Started program("answer");
    EXPECT_TRUE(hasChildren());
    program.say();  // it ends on its own, sooner or later
    platform::releaseProcess(program.process);
    EXPECT_FALSE(hasChildren());
    {
        const Started killed("answer");
        Started hanging("hear");
        EXPECT_EQ(hanging.hear(), "ready");
        platform::releaseProcess(hanging.process);
    }
    EXPECT_FALSE(hasChildren());
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(Process, HasALittleTimeWhenItIsReleasedAndCaresForIt) {
    Started program("hear");
    EXPECT_EQ(program.hear(), "ready");
    Started careless("answer");
    for (Started* each : {&program, &careless}) platform::releaseProcess(each->process);
    EXPECT_EQ(careless.hear(), "");
    EXPECT_EQ(program.hear(), "told");
    EXPECT_EQ(program.hear(), "") << "it hangs, and is ended";
}

}  // namespace
