// What it costs that a decoder is a program: its start, and the news of its death.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vorn/vorn.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "contest.h"
#include "peer_process.h"
#include "rows.h"
#include "transport/connection.h"
#include "transport/module_process.h"

extern char** environ;

namespace vorn_bench {
namespace {

constexpr int kTurns = 101;

// From nothing to the module's first acknowledgement.
double moduleStart(const char* loader) {
    VORN_Image* image =
        VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word{VORN_LOADER}, TAG_End);
    const std::string program = std::string(VORN_BENCH_HOME) + "/Loaders/" + loader;
    const double seconds = secondsEach(1, [&] {
        if (!vorn::SharedStuffCreate(*image, VORN_LOADER) ||
            !vorn::ModuleLaunch(*image, program.c_str()) ||
            !VORN_L_ImageHandleStartReading(image)) {
            std::abort();
        }
    });
    VORN_L_ShutDownHandle(image);
    vorn::SharedStuffClose(*image);
    VORN_L_ImageDestroyHandle(image);
    return seconds;
}

// From nothing to a byte from a program that does nothing else.
double programStart(const char* program) {
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) std::abort();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, pipe[1], 1);
    std::string path = std::string(VORN_BENCH_DIR) + "/" + program;
    char* arguments[] = {path.data(), nullptr};
    pid_t id = 0;
    const double seconds = secondsEach(1, [&] {
        if (::posix_spawn(&id, path.c_str(), &actions, nullptr, arguments, environ) != 0)
            std::abort();
        char byte = 0;
        if (::read(pipe[0], &byte, 1) != 1) std::abort();
    });
    ::waitpid(id, nullptr, 0);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(pipe[0]);
    ::close(pipe[1]);
    return seconds;
}

using Clock = std::chrono::steady_clock;

Clock::time_point* sharedTime() {
    return static_cast<Clock::time_point*>(::mmap(nullptr, sizeof(Clock::time_point),
                                                  PROT_READ | PROT_WRITE,
                                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

// Dies long after the host has begun to wait.
void die(Clock::time_point* death) {
    ::usleep(2000);
    *death = Clock::now();
    ::raise(SIGKILL);
}

double since(Clock::time_point* death) {
    const double seconds = std::chrono::duration<double>(Clock::now() - *death).count();
    ::munmap(death, sizeof *death);
    return seconds;
}

double deathOfModule() {
    Clock::time_point* death = sharedTime();
    Connection connection(VORN_LOADER, [death](SharedStuff&) { die(death); });
    if (VORN_L_StartReadingSharedStuff(&connection.host())) std::abort();
    return since(death);
}

double deathOfProgram() {
    Clock::time_point* death = sharedTime();
    PeerProcess peer([death] { die(death); });
    pollfd end{peer.watch(), POLLIN, 0};
    if (::poll(&end, 1, -1) != 1) std::abort();
    return since(death);
}

}  // namespace

void startRows() {
    const auto start = [](const char* loader, const char* libraries, const char* linkedAlike) {
        compare(std::string("Start to the first acknowledgement, ") + loader + " loader", kTurns,
                {{"vorn", [=] { return moduleStart(loader); }},
                 {"program that only says so", [] { return programStart("trivial"); }},
                 {std::string("the same, linked with ") + libraries,
                  [=] { return programStart(linkedAlike); }}});
    };
    start("pnm", "libvorn", "trivial_vorn");
    start("png", "libvorn and libpng", "trivial_png");
    compare("Death to its news", kTurns,
            {{"vorn", deathOfModule}, {"poll on the process", deathOfProgram}});
}

}  // namespace vorn_bench
