// Starting module programs. The program is started by an intermediate task that shares this
// program's memory and descriptors for the moment, and that ends when the program runs. So the
// program is nobody's child here: no signal comes when it ends, no wait of this program finds it,
// and the system reaps it. Nothing is copied (no fork), whatever the size of this program.
#include "platform/process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "platform/connection.h"
#include "platform/posix/descriptor.h"

// The tasks that run between clone and exec borrow the calling thread's identity: checks that keep
// books per thread or process must not see them. So they are not instrumented, and call the kernel
// past the functions that sanitizers replace.
#define VORN_BORROWED_THREAD \
    __attribute__((no_sanitize("address", "thread", "undefined"), noinline))

extern "C" char** environ;

// The thread sanitizer takes every clone for a fork and sets its books up for the copy, which there
// is none of here. The C library knows the function by a second name.
#if defined(__SANITIZE_THREAD__)
extern "C" int __clone(int (*task)(void*), void* stack, int flags, void* argument, ...);
#define VORN_CLONE ::__clone
#else
#define VORN_CLONE ::clone
#endif

namespace vorn::platform {
namespace {

constexpr size_t kStackSize = 65536;
constexpr const char* kHostVariable = "VORN_HOST=";
constexpr const char* kArenaVariable = "MALLOC_ARENA_MAX=";
constexpr const char* kApplicationVariable = "VORN_APPLICATION=";
constexpr const char* kVariableNames[] = {kHostVariable, kArenaVariable, kApplicationVariable};
constexpr size_t kVariables = std::size(kVariableNames);
constexpr size_t kVariableSize = 128;  // names of applications are shorter than 80 bytes
constexpr size_t kSignalSetSize = 8;   // the kernel's

// What the two borrowed tasks work on. It lives in the caller's memory, which they share.
struct Start {
    const ProcessStart* request;
    char** environment;
    int32_t host;   // a descriptor that the program watches this program's end with
    int32_t line;   // the program's end of a pipe
    int32_t empty;  // what stands for standard streams
    char* programStack;
    int32_t error;
    int watch;
    pid_t id;
};

// The system warns the program at the value and ends it `grace` above.
VORN_BORROWED_THREAD int32_t limit(int resource, uint64_t value, uint64_t grace = 0) {
    uint64_t bounds[2] = {0, 0};  // now, at most
    if (::syscall(SYS_prlimit64, 0, resource, nullptr, bounds) != 0) return errno;
    if (value >= bounds[1]) return 0;
    bounds[0] = value;
    bounds[1] = value + grace < bounds[1] ? value + grace : bounds[1];
    return ::syscall(SYS_prlimit64, 0, resource, bounds, nullptr) == 0 ? 0 : errno;
}

VORN_BORROWED_THREAD void resetSignals() {
    const uint64_t zeros[8] = {};  // a standard action, an empty set
    for (int number = 1; number < NSIG; ++number) {
        ::syscall(SYS_rt_sigaction, number, zeros, nullptr, kSignalSetSize);
    }
    ::syscall(SYS_rt_sigprocmask, SIG_SETMASK, zeros, nullptr, kSignalSetSize);
}

VORN_BORROWED_THREAD int32_t arrangeDescriptors(const Start& start) {
    if (::syscall(SYS_dup3, start.empty, STDIN_FILENO, 0) < 0) return errno;
    if (::syscall(SYS_dup3, start.empty, STDOUT_FILENO, 0) < 0) return errno;
    // Without a standard error, the first file that the program opens would become it.
    if (::syscall(SYS_fcntl, STDERR_FILENO, F_GETFD) < 0 &&
        ::syscall(SYS_dup3, start.empty, STDERR_FILENO, 0) < 0) {
        return errno;
    }
    if (::syscall(SYS_close_range, kFirstDescriptor, ~0u, CLOSE_RANGE_CLOEXEC) != 0) return errno;
    const ProcessStart& request = *start.request;
    for (size_t i = 0; i < request.inheritedCount; ++i) {
        if (::syscall(SYS_fcntl, request.inherited[i], F_SETFD, 0) != 0) return errno;
    }
    return ::syscall(SYS_fcntl, start.host, F_SETFD, 0) == 0 ? 0 : errno;
}

// The other end of the line is this program's alone. When it is closed, however that comes, the
// system sends SIGIO to the new program, which so hears of it also while it waits for nothing.
VORN_BORROWED_THREAD int32_t arrangeLine(int32_t line) {
    const bool arranged = ::syscall(SYS_fcntl, line, F_SETFD, 0) == 0 &&
                          ::syscall(SYS_fcntl, line, F_SETOWN, ::syscall(SYS_getpid)) == 0 &&
                          ::syscall(SYS_fcntl, line, F_SETFL, O_ASYNC) == 0;
    return arranged ? 0 : errno;
}

// The program's own task: everything here is undone for the host, as its descriptors and signal
// dispositions are copies.
VORN_BORROWED_THREAD int runProgram(void* argument) {
    auto& start = *static_cast<Start*>(argument);
    const ProcessStart& request = *start.request;
    resetSignals();
    ::setsid();  // what a terminal sends to its programs (Ctrl-C) is for the host to deal with
    int32_t error = arrangeDescriptors(start);
    if (!error) error = arrangeLine(start.line);
    // No core dumps: a dump delays the news of a module's death by seconds.
    if (!error) error = limit(RLIMIT_CORE, 0);
    if (!error && request.limits.addressSpaceBytes)
        error = limit(RLIMIT_AS, request.limits.addressSpaceBytes);
    if (!error && request.limits.cpuSeconds)
        error = limit(RLIMIT_CPU, request.limits.cpuSeconds, 1);
    if (!error) {
        ::syscall(SYS_execve, request.path, request.arguments, start.environment);
        error = errno;
    }
    start.error = error;
    ::syscall(SYS_exit_group, 127);
    return 0;
}

VORN_BORROWED_THREAD int runIntermediate(void* argument) {
    auto& start = *static_cast<Start*>(argument);
    start.id = VORN_CLONE(runProgram, start.programStack,
                          CLONE_VM | CLONE_VFORK | CLONE_PIDFD | SIGCHLD, &start, &start.watch);
    if (start.id < 0)
        start.error = errno;
    else if (start.error)  // it ended without becoming a program: nobody else would reap it
        ::syscall(SYS_wait4, start.id, nullptr, 0, nullptr);
    ::syscall(SYS_exit_group, 0);
    return 0;
}

bool isReplaced(const char* entry) {
    for (const char* name : kVariableNames) {
        if (std::strncmp(entry, name, std::strlen(name)) == 0) return true;
    }
    return false;
}

// The environment of this program with what a module needs in front. The array points into environ;
// the strings of its own stand behind the array. Freed with free.
char** moduleEnvironment(int32_t host, const char* application) {
    size_t count = 0;
    while (environ && environ[count]) ++count;
    const size_t entries = count + kVariables + 1;
    auto* list =
        static_cast<char**>(std::malloc(entries * sizeof(char*) + kVariables * kVariableSize));
    if (!list) return nullptr;
    char* text = reinterpret_cast<char*>(list + entries);
    size_t used = 0;
    for (; used < kVariables; ++used) list[used] = text + used * kVariableSize;
    std::snprintf(list[0], kVariableSize, "%s%d", kHostVariable, host);
    std::snprintf(list[1], kVariableSize, "%s2", kArenaVariable);
    std::snprintf(list[2], kVariableSize, "%s%s", kApplicationVariable, application);
    for (size_t i = 0; i < count; ++i) {
        if (!isReplaced(environ[i])) list[used++] = environ[i];
    }
    list[used] = nullptr;
    return list;
}

void cloneIntermediate(Start& start, char* intermediateStack) {
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all,
                      &before);  // no handler of this program may run in a borrowed task
    // Without an end signal the task is invisible to the ordinary waits of this program.
    const pid_t id = VORN_CLONE(runIntermediate, intermediateStack,
                                CLONE_VM | CLONE_VFORK | CLONE_FILES, &start, nullptr);
    if (id < 0)
        start.error = errno;
    else
        while (::waitpid(id, nullptr, static_cast<int>(__WCLONE)) < 0 && errno == EINTR) {
        }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

int32_t startWith(Start& start) {
    const size_t size = 2 * kStackSize;
    void* stacks = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (stacks == MAP_FAILED) return errno;
    char* bottom = static_cast<char*>(stacks);
    start.programStack = bottom + kStackSize;
    cloneIntermediate(start, bottom + size);
    ::munmap(stacks, size);
    if (start.error) {
        closeDescriptor(start.watch);
        return start.error;
    }
    start.watch = aboveStandardStreams(start.watch);
    return start.watch >= 0 ? 0 : errno;  // the line's end ends the program
}

int32_t openProcess(pid_t id) {
    return aboveStandardStreams(static_cast<int>(::syscall(SYS_pidfd_open, id, 0u)));
}

// False when the program is this one's child and goes on.
bool reap(const Process& process) {
    siginfo_t info{};
    const int error = ::waitid(static_cast<idtype_t>(P_PIDFD), static_cast<id_t>(process.watch),
                               &info, WEXITED | WNOHANG | __WALL);
    return error != 0 || info.si_pid != 0;
}

bool reapWithin(const Process& process, int milliseconds) {
    pollfd end{process.watch, POLLIN, 0};
    ::poll(&end, 1, milliseconds);
    return reap(process);
}

void send(const Process& process, int signal) {
    if (process.watch >= 0) ::syscall(SYS_pidfd_send_signal, process.watch, signal, nullptr, 0u);
}

int32_t openEmpty() { return aboveStandardStreams(::open("/dev/null", O_RDWR | O_CLOEXEC)); }

bool openLine(int32_t (&ends)[2]) {
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    for (int32_t& end : ends) end = aboveStandardStreams(end);
    return ends[0] >= 0 && ends[1] >= 0;
}

}  // namespace

int32_t startProcess(const ProcessStart& request, Process& process) {
    process = Process{};
    const int32_t host = openProcess(::getpid());
    if (host < 0) return errno;
    const int32_t empty = openEmpty();
    int32_t line[2] = {-1, -1};
    int32_t error = empty >= 0 && openLine(line) ? 0 : errno;
    char** environment = moduleEnvironment(host, request.application);
    if (!environment) error = ENOMEM;
    Start start{&request, environment, host, line[0], empty, nullptr, 0, -1, -1};
    if (!error) error = startWith(start);
    std::free(environment);
    closeDescriptor(line[0]);
    closeDescriptor(empty);
    closeDescriptor(host);
    if (error == 0)
        process = Process{start.watch, line[1], start.id};
    else
        closeDescriptor(line[1]);
    return error;
}

bool hasEnded(const Process& process) {
    pollfd wait{process.watch, POLLIN, 0};
    return ::poll(&wait, 1, 0) > 0 && wait.revents != 0;
}

void killProcess(const Process& process) { send(process, SIGKILL); }

// A program whose intermediate has ended belongs to the system's reaper. Where this program is that
// reaper (as the first process of a container is), an end is this program's to collect. A program
// that has been stopped hears of the line only when it goes on.
void releaseProcess(Process& process) {
    if (process.watch < 0) return;
    closeDescriptor(process.line);
    send(process, SIGCONT);
    if (!reap(process) && !reapWithin(process, kLastMilliseconds)) {
        killProcess(process);
        reapWithin(process, kLastMilliseconds);
    }
    closeDescriptor(process.watch);
    process = Process{};
}

int32_t currentThreadId() { return static_cast<int32_t>(::syscall(SYS_gettid)); }

bool watchHost(int32_t hostThread, int32_t& watch) {
    watch = kNoDescriptor;
    const char* given = std::getenv("VORN_HOST");
    if (!given) {  // started by something else than this library: the thread's number has to do
        const int32_t opened = openProcess(hostThread);
        if (opened < 0) return errno != ESRCH;
        watch = opened;
        return true;
    }
    watch = static_cast<int32_t>(std::strtol(given, nullptr, 10));
    ::fcntl(watch, F_SETFD, FD_CLOEXEC);
    return !hasEnded(Process{watch});
}

const char* hostApplication() { return std::getenv("VORN_APPLICATION"); }

}  // namespace vorn::platform
