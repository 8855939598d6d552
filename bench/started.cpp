#include "started.h"

#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

extern "C" char** environ;

namespace vorn_bench {
namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

}  // namespace

pid_t start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    pid_t id = -1;
    if (posix_spawn(&id, arguments[0], nullptr, nullptr, arguments.data(), environ) == 0) return id;
    std::perror(arguments[0]);
    std::exit(1);
}

// Programs whose parent has ended become children of this one, so the time of modules is known.
Spent run(const std::vector<std::string>& command) {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const auto begin = std::chrono::steady_clock::now();
    const pid_t program = start(command);
    Spent spent;
    int status = 0;
    rusage usage{};
    for (pid_t ended = 0; (ended = wait4(-1, &status, 0, &usage)) > 0;) {
        spent.cpu += seconds(usage.ru_utime) + seconds(usage.ru_stime);
        if (ended != program) continue;
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
        spent.wall = wall.count();
        if (status == 0) continue;
        std::fprintf(stderr, "%s has failed\n", command[0].c_str());
        std::exit(1);
    }
    return spent;
}

}  // namespace vorn_bench
